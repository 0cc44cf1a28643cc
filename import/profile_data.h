// The content of the two profiles, made from the functions of the inputs.
#pragma once

#include "import/named_count.h"
#include "import/record_store.h"
#include "import/source_names.h"
#include "profile/profile_content.h"

struct profile_data {
    PGOPTI_PROFILE profile; ///< without its number of runs
    named_count different;  ///< functions dropped for a larger one of the same name, with their source file
    named_count misplaced;  ///< blocks where the source file has no character, with its name
};

/// Lays out every function of `store`, one source file after the other, and empties the store.
profile_data build_profile(record_store* store, const source_names& names);
