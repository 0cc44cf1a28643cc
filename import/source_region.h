// The regions of a source file that the compiler maps to counters.
#pragma once

#include "common/source_position.h"

#include <cstdint>

/// Lines, columns and their sums fit 32 bits with room to spare; the static profile holds signed numbers.
constexpr std::uint32_t kLargestLine = 0x7fffffff;
constexpr std::uint32_t kLargestColumn = 0x3fffffff;

/// The largest count of an export; sums stay at it. It is far from the all-ones value that vexcov reserves.
constexpr std::uint64_t kLargestCount = 0x7fffffffffffffff;

/// a + b, at most kLargestCount.
inline std::uint64_t add_counts(std::uint64_t a, std::uint64_t b) {
    return a > kLargestCount - b ? kLargestCount : a + b;
}

enum class region_kind : std::uint32_t {
    code,    ///< counted code
    skipped, ///< taken out by the preprocessor, or a comment
    gap,     ///< blanks between two statements, with the count of the second
};

/// One region of a function's main file. 24 bytes: a large program has millions.
struct source_region {
    source_position start;
    std::uint32_t end_line;
    std::uint32_t end_column : 30;
    std::uint32_t kind_bits : 2; ///< region_kind
    std::uint64_t count;         ///< executions, at most kLargestCount

    source_position end() const { return {end_line, end_column}; }
    region_kind kind() const { return static_cast<region_kind>(kind_bits); }
};
