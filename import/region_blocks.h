// From the regions of a function to its basic blocks.
//
// The blocks' places depend on the regions, the functions defined inside and the source text only, never on
// counts, so that the profiles of two runs of one program can be compared block by block.
#pragma once

#include "import/source_region.h"
#include "import/source_text.h"

#include <optional>
#include <vector>

/// A basic block of the profile.
struct profile_block {
    source_position position;
    std::uint64_t count;
};

/// A function that is defined inside another one, such as the body of a lambda.
struct nested_function {
    source_extent extent;
    std::uint32_t first_line; ///< line from which vexcov marks it when it was never called
};

/// From the start of the first counted region to the end of the last. `regions` as main_file_function has
/// them, with at least one counted region; the same below.
source_extent function_extent(const std::vector<source_region>& regions);

/// The first code inside a function's braces; the opening brace for one without.
source_position first_code_inside(const source_extent& function, code_cursor* cursor);

/// The blocks in ascending order of their positions, at least two: the first is the function's entry, the
/// last stands at its closing brace and has no count yet. `nested`: what is defined directly inside,
/// ascending. `own_mark`: for a function that lies inside another one itself, its first code, where vexcov
/// marks it when it was never called.
std::vector<profile_block> build_blocks(const std::vector<source_region>& regions,
                                        const std::vector<nested_function>& nested,
                                        const std::optional<source_position>& own_mark,
                                        const source_text& source);

/// Counts the last block: `entries` when every other block was executed, else 0. vexcov counts one block more
/// of each function that has blocks left, so the percentage is 100 exactly when everything was executed.
void count_last_block(std::vector<profile_block>* blocks, std::uint64_t entries);
