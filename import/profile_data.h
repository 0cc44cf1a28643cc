// The content of the two profiles, made from the functions of the inputs.
#pragma once

#include "import/record_store.h"
#include "import/source_names.h"
#include "profile/profile_content.h"

#include <cstdint>

struct profile_data {
    PGOPTI_PROFILE profile;      ///< without its number of runs
    std::uint64_t different = 0; ///< functions dropped for a larger one of the same name
    std::uint64_t misplaced = 0; ///< blocks where the source file has no character
};

/// Lays out every function of `store`, one source file after the other, and empties the store.
profile_data build_profile(record_store* store, const source_names& names);
