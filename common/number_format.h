// Counts as text, pairs of counts as percentages and paths as short names, the same way in every page and
// export.
//
// Buffer contract of the three conversions: the caller owns `buffer` and gives at least 27 bytes (20 digits,
// six separators and the NUL, or a minus sign, 19 digits, six separators and the NUL).
#pragma once

#include <cstdint>

/// Size that holds every result of the conversions below.
constexpr int kNumberTextSize = 27;

/// Writes `value` in decimal with "," every three digits and a leading "-" when negative. The lowest 64-bit
/// value is outside the supported range.
void i64_to_ascii(char* buffer, std::int64_t value);

/// Writes `value` in decimal with "," every three digits.
void u64_to_ascii(char* buffer, std::uint64_t value);

/// Writes `value` as plain decimal digits.
void u64_to_ascii_no_sep(char* buffer, std::uint64_t value);

/// part * 100 / whole, unrounded; exactly 0.0 when `whole` is 0.
double percent(std::int32_t part, std::int32_t whole);
double percent64(std::int64_t part, std::int64_t whole);

/// The last component of a path: a pointer into `path` just past its last "/", `path` itself when it has
/// none, null for null. A backslash is not a separator.
const char* brief(const char* path);
