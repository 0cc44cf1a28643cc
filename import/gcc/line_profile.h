// The profile that is made of the lines of all objects.
#pragma once

#include "import/gcc/line_store.h"
#include "import/named_count.h"
#include "import/region_blocks.h"
#include "profile/profile_content.h"

struct line_profile {
    PGOPTI_PROFILE profile; ///< without its number of runs
    named_count misplaced;  ///< blocks beyond the end of their source file, with its name
    named_count unreadable; ///< source files that cannot be read: their blocks stand in column 1
};

/// Places every function of `store`, one source file after the other, and empties the store.
line_profile build_line_profile(line_store* store, const source_names& names);
