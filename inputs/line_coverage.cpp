#include "inputs/line_coverage.h"

#include "analysis/line_walk.h"

void collect_lines(const source_analysis& analysis, std::vector<line_coverage>& lines) {
    lines.clear();
    for (line_walk walk(analysis); walk.next();) {
        if (walk.line().disabled || !walk.holds_code())
            continue;
        const line_blocks blocks = walk.blocks();
        lines.push_back({walk.line().number, blocks.total, blocks.executed, walk.count()});
    }
}
