// A whole run of the importer.
#pragma once

#include "import/import_options.h"

/// Parses the command line, reads every input, merges them and writes the two profiles. Any failure ends the
/// run with a message and status 1, with both profiles as they were. main calls it through run_program.
void run_importer(int argc, char** argv);

/// The same behind the command line, for other programs.
void import_profiles(const import_options& options);
