// The profile that is made of the lines of all objects.
#pragma once

#include "import/gcc/line_store.h"
#include "import/region_blocks.h"
#include "profile/profile_content.h"

#include <cstdint>

struct line_profile {
    PGOPTI_PROFILE profile;       ///< without its number of runs
    std::uint64_t misplaced = 0;  ///< blocks beyond the end of their source file
    std::uint64_t unreadable = 0; ///< source files that cannot be read: their blocks stand in column 1
};

/// Places every function of `store`, one source file after the other, and empties the store.
line_profile build_line_profile(line_store* store, const source_names& names);
