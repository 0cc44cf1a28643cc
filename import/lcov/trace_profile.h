// From the lines of a trace to the blocks of a profile.
//
// A line is a block at its first character that is not blank; one with branches of which some were taken and
// some were not has one more block, with count 0, so that it shows as partly covered. A function reaches from
// its first line to its last or, where the trace does not tell that one, to the next function. Lines outside
// every function belong to a routine (file), and so do lines that were executed in a function that was not: a
// script executes the heads of its functions when it is loaded.
#pragma once

#include "import/lcov/trace_store.h"
#include "import/named_count.h"
#include "import/region_blocks.h"
#include "profile/profile_content.h"

struct trace_profile {
    PGOPTI_PROFILE profile; ///< without its number of runs
    named_count misplaced;  ///< blocks beyond the end of their source file, with its name
    named_count unreadable; ///< source files that cannot be read: their blocks stand in column 1
};

/// Places every function of the store, one source file after the other, and empties it.
trace_profile build_trace_profile(trace_store* store, const source_names& names);
