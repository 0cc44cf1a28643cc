// A whole run of "vexcov-import gcc".
#pragma once

#include "import/import_options.h"

/// Reads the counters of every object and the JSON files that the command line names, and writes the two
/// profiles. Without inputs, the working directory is searched for objects. Any failure ends the run with a
/// message and status 1, with both profiles as they were. What is wrong with single objects is told in
/// warnings; where gcov could read nothing of one, both profiles are written without it, and the run ends
/// with status 1.
void run_gcc_import(const import_options& options);
