// What can be seen to be wrong before the tests have run, which may take long.
#pragma once

#include "run/run_options.h"

/// Ends the run with a message where one of the -objects is not there.
void check_objects(const run_options& options);

/// The same for what the report reads, and where its folder cannot be written to. Makes nothing.
void check_before_run(const run_options& options);
