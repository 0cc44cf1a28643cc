// Where the functions of a source file begin for a reader: at the first code of their heads, not where the
// compiler puts them, which is at the body (clang) or at the name (gcc).
#pragma once

#include "common/source_position.h"
#include "common/source_text.h"
#include "import/source_outline.h"

#include <cstdint>
#include <vector>

struct function_start {
    source_position position; ///< of the first block; what the compiler says when the text has no head
    std::uint32_t line; ///< for the static profile: the function is marked from here when it was never called
    bool has_head;      ///< `position` is that of a head
    bool starts_line;   ///< no code stands in front of the head on its line
};

/// The starts of functions whose extents are given as the compiler has them, ascending by start, the longer
/// first. A head never begins in front of the end of another function.
std::vector<function_start> find_function_starts(const source_text& source, const source_outline& outline,
                                                 const std::vector<source_extent>& extents);
