#include "site/line_counts.h"

#include "site/html_text.h"

#include <algorithm>

constexpr std::size_t kMostTitles = 20; ///< positions of a line that are listed one by one

void put_short_count(text_buffer& out, std::uint64_t count) {
    static const char units[] = {'k', 'M', 'G', 'T', 'P', 'E'};
    if (count < 1000)
        return out.put_number(count);
    std::size_t unit = 0;
    std::uint64_t rest = count;
    for (; rest >= 1000000; rest /= 1000)
        ++unit;
    const std::uint64_t whole = rest / 1000;
    out.put_number(whole);
    if (whole < 10 && rest % 1000 >= 100) {
        out.put('.');
        out.put_number(rest % 1000 / 100);
    }
    out.put(units[unit]);
}

/// What a position says of its blocks.
static void put_title(text_buffer& out, const block_list_node& position) {
    out.put("column ");
    out.put_number(position.column);
    out.put(": ");
    if (position.count == NEVER_ENTERED) {
        out.put("function never called");
        return;
    }
    put_grouped(out, position.count);
    if (position.numBlocks > 1) {
        out.put(" (");
        put_grouped(out, position.numExecuted);
        out.put(" of ");
        put_grouped(out, position.numBlocks);
        out.put(" blocks ran)");
    }
}

void put_line_counts(text_buffer& out, std::span<const block_list_node> positions) {
    std::uint64_t largest = 0;
    std::size_t counted = 0;
    for (const block_list_node& position : positions) {
        counted += position.bAdjusted() ? 0 : 1;
        if (!position.bAdjusted() && position.count != NEVER_ENTERED)
            largest = std::max(largest, position.count);
    }
    if (counted == 0)
        return;
    out.put(" data-c=");
    put_short_count(out, largest);
    out.put(" title=\"");
    std::size_t listed = 0;
    for (auto position = positions.begin(); position != positions.end() && listed < kMostTitles; ++position) {
        if (position->bAdjusted())
            continue;
        if (listed++ != 0)
            out.put('\n');
        put_title(out, *position);
    }
    if (counted > listed) {
        out.put("\nand ");
        put_grouped(out, counted - listed);
        out.put(" more");
    }
    out.put('"');
}
