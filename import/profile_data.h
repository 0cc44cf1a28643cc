// What the two profile files hold, and how it is made from the functions of the inputs.
#pragma once

#include "import/record_store.h"
#include "import/region_blocks.h"
#include "import/source_names.h"

#include <cstdint>
#include <string>
#include <vector>

/// One function of the profile.
struct profile_record {
    std::uint32_t file;                  ///< index into profile_data::files
    std::string name;                    ///< routine name and key function name
    std::uint32_t line;                  ///< first line
    std::uint32_t blocks;                ///< number of blocks
    bool called;                         ///< it has a record in the dynamic profile
    std::vector<profile_block> counters; ///< its blocks; empty when it was not called
};

struct profile_data {
    std::vector<std::string> files;      ///< source files
    std::vector<profile_record> records; ///< ascending by key: file name ' function name ', as unsigned bytes
    std::uint64_t different = 0;         ///< functions dropped for a larger one of the same name
    std::uint64_t misplaced = 0;         ///< blocks where the source file has no character
};

/// Lays out every function of `store`, one source file after the other, and empties the store.
profile_data build_profile(record_store* store, const source_names& names);
