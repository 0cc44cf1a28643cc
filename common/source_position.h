// Places in a source file.
#pragma once

#include <compare>
#include <cstdint>

/// A character of a source file: line and column (in bytes) count from 1.
struct source_position {
    std::uint32_t line;
    std::uint32_t column;
    auto operator<=>(const source_position&) const = default;
};

/// A stretch of source text; `end` is the position behind its last character.
struct source_extent {
    source_position start;
    source_position end;
    auto operator<=>(const source_extent&) const = default;
};
