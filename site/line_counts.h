// How often the blocks ran that begin on a line.
#pragma once

#include "analysis/source_analysis.h"
#include "common/text_buffer.h"

#include <cstdint>
#include <span>

/// The number of executions in at most four characters: 999, 1.2k, 34M.
void put_short_count(text_buffer& out, std::uint64_t count);

/// The counts of the blocks that begin on the line: the largest to be shown, each to be read on demand. What
/// closes a function is no block.
void put_line_counts(text_buffer& out, std::span<const block_list_node> positions);
