// The two decisions of the listing writer that are worth a look of their own.
#pragma once

#include "driver/color_table.h"

#include <cstdint>

/// Coverage class of a position from its count, its numbers of blocks and of executed blocks, and its flags
/// (see block_list_node).
Color getColor(std::uint64_t count, bool bNotInRef, unsigned int numBlocks, unsigned int numExecuted,
               bool bAdjusted);

/// Address of the first '^' from `p` on in the line, or null when the line ends before; null for null.
const char* posNextMarker(const char* p);
