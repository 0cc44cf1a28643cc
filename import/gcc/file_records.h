// The functions of one source file on their way into the profile, for readers whose input tells of lines. A
// profile has one record for each file and name; here functions of one name become one.
#pragma once

#include "import/region_blocks.h"
#include "profile/profile_content.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

/// A function with its blocks in the order in which the profile numbers them.
struct placed_function {
    std::string name;
    std::uint32_t line;                ///< its first line, from which it is marked when it was never called
    bool called;                       ///< it has a record
    std::size_t last;                  ///< index of the last block, behind which nothing stands in the text
    std::vector<profile_block> blocks; ///< the entry first; the last one has no count yet. Behind it those
                                       ///< that other runs may not have
};

/// Appends the records of one file to `profile`. Functions of one name of which some were called become one
/// record with the blocks of all; where none was called, each keeps its line in the static profile. Sets the
/// count of each last block: that of the entry when every other block was executed, else 0, as vexcov credits
/// each called function with one block more. The static profile has the number of the blocks up to this one,
/// so that it is the same for all runs.
void add_file_records(std::uint32_t file, std::vector<placed_function> functions, PGOPTI_PROFILE* profile);
