// A whole run of the importer.
#pragma once

#include "import/import_options.h"

/// Reads every input, merges them and writes the two profiles. Any failure ends the run with a message and
/// status 1, with both profiles as they were.
void run_import(const import_options& options);
