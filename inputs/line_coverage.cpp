#include "inputs/line_coverage.h"

void collect_lines(const source_analysis& analysis, std::vector<line_coverage>& lines,
                   const line_watcher& watch) {
    lines.clear();
    const bool colours = static_cast<bool>(watch); // nobody else asks for them
    for (line_walk walk(analysis, colours); walk.next();) {
        if (watch)
            watch(walk);
        if (walk.line().disabled || !walk.holds_code())
            continue;
        const line_blocks blocks = walk.blocks();
        lines.push_back({walk.line().number, blocks.total, blocks.executed, walk.count()});
    }
}
