// What a line of source is worth to whoever counts lines: the one definition that all companions share.
//
// A line counts when it holds code (line_walk.h) and no marker takes it out. Its hits are line_walk's count.
#pragma once

#include "analysis/line_walk.h"

#include <cstdint>
#include <functional>
#include <vector>

/// One line that holds code.
struct line_coverage {
    std::uint32_t number;   ///< 1-based
    std::uint32_t blocks;   ///< blocks that the line is shown in (line_walk::blocks)
    std::uint32_t executed; ///< of those, executed ones
    std::uint64_t count;    ///< how often the line was executed; its covered code decides

    bool covered() const { return count != 0; }
    /// Shown in more than the colour of covered code: part of it was not reached. Never in differential mode.
    bool partly() const { return covered() && executed < blocks; }
};

/// Sees the lines of a file one after the other.
using line_watcher = std::function<void(const line_walk&)>;

/// The lines of a file that hold code, ascending, in place of what `lines` held. `watch`, if there is one,
/// sees every line meanwhile.
void collect_lines(const source_analysis& analysis, std::vector<line_coverage>& lines,
                   const line_watcher& watch = nullptr);
