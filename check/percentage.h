// Percentages that are compared exactly, in whole numbers, and shown without ever being rounded up.
#pragma once

#include "inputs/coverage_walk.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// A percentage from 0 to 100, as a user gives it.
struct percentage {
    std::int64_t units = 0; ///< billionths of a percent
    std::string text = "0"; ///< as it was given

    /// Decimals that it was given with, at most nine.
    int decimals() const;
};

/// Reads "80", "99.5", with at most nine decimals. Nothing for what is no number from 0 to 100.
std::optional<percentage> read_percentage(std::string_view text);

/// True when at least `least` of the count is covered. Where there is nothing to cover, it is.
bool reaches(const covered_count& count, const percentage& least);

/// True when a smaller part is covered than before, by more than the tolerance. Where there is, or was,
/// nothing to cover, nothing falls.
bool has_fallen(const covered_count& now, const covered_count& before, const percentage& tolerance);

/// True when a smaller part of `a` is covered than of `b`. Nothing to cover is more than all of something.
bool is_lower(const covered_count& a, const covered_count& b);

/// What is not covered; never below 0.
std::int64_t uncovered_of(const covered_count& count);

/// "87.41%", truncated to that many decimals; "-" where there is nothing to cover.
std::string shown_part(const covered_count& count, int decimals = 2);

/// "87.41% (118 of 135)", or "- (0 of 0)".
std::string shown_count(const covered_count& count, int decimals = 2);
