// The blocks of a record that other runs of the same program may not have.
//
// Importers that know lines and no branches mark a line that was executed in part by one more block with
// count 0, and leave out lines that exist for exceptions only. Which lines these are depends on the run, so
// such blocks stand behind all that every run has:
//
//   ascending places up to the closing brace                       the same in every run
//   ascending places, none of them above, all before the last one  more lines
//   ascending places, all of them above, before the last one       marks of lines executed in part
//
// Records that are the same in the first part are of one function. In their sum a line is marked when every
// record that executed the line marks it: what one run left out another one reached. So the sum does not
// depend on the order. A record whose places do not follow this pattern has no tail.
#pragma once

#include "profile/dpi_content.h"

#include <cstddef>
#include <string_view>

/// Where the parts of a record's blocks end.
struct block_parts {
    std::size_t common = 0; ///< blocks that every run has: all of them where the pattern is not followed
    std::size_t lines = 0;  ///< with those behind them that are lines of their own
    std::size_t blocks = 0;
    bool has_pattern = false;
};

/// Finds the parts in positions as a record stores them.
block_parts find_block_parts(std::string_view positions);

/// Whether records with these positions are of one function: the same, or the same in their first parts.
bool are_of_one_function(std::string_view a, const block_parts& parts_of_a, std::string_view b);

/// Adds the counters of `other`, which is of the same function as `*sum`; of all groups, at most all ones.
void add_counters(DPI_CONTENT* sum, const DPI_CONTENT& other);
