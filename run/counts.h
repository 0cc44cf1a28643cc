// What the programs of a run have counted, and what there is to say when that is nothing.
#pragma once

#include "run/run_options.h"
#include "run/scratch_folder.h"
#include "run/test_command.h"

/// The environment in which programs leave their counts in `scratch`, those of each compiler in a folder of
/// its own, and nowhere else: they neither meet the counts of older runs nor lie about in the build tree.
std::vector<environment_change> counting_environment(const scratch_folder& scratch);

/// The folder with the counts of one compiler's programs.
std::string counts_folder(const scratch_folder& scratch, compiler by);

/// The compiler whose programs have left counts: the one that the options choose, else the only one. Ends the
/// run with a message that says what to do when there are no counts, or those of both.
compiler find_counts(const run_options& options, const scratch_folder& scratch);
