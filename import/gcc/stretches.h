// Code outside every function that was never executed. A routine without a record is marked where it begins,
// and the mark reaches to the next block; so each stretch of such code is a routine of its own.
#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

/// Splits lines, ascending, where a function begins between them. `starts`: lines on which functions begin,
/// ascending.
template <typename Line>
std::vector<std::vector<Line>> split_stretches(const std::vector<Line>& lines,
                                               const std::vector<std::uint32_t>& starts) {
    std::vector<std::vector<Line>> stretches;
    for (const Line& line : lines) {
        const bool apart = stretches.empty() ||
                           std::upper_bound(starts.begin(), starts.end(), stretches.back().back().line) !=
                               std::upper_bound(starts.begin(), starts.end(), line.line);
        if (apart)
            stretches.emplace_back();
        stretches.back().push_back(line);
    }
    return stretches;
}

/// Whether some of the lines were executed.
template <typename Line> bool any_executed(const std::vector<Line>& lines) {
    return std::any_of(lines.begin(), lines.end(), [](const Line& line) { return line.count != 0; });
}
