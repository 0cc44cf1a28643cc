// A whole run of "vexcov-import lcov".
#pragma once

#include "import/import_options.h"

/// Reads the named trace files, adds them up and writes the two profiles. Any failure ends the run with a
/// message and status 1, with both profiles as they were.
void run_lcov_import(const import_options& options);
