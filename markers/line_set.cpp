#include "markers/line_set.h"

#include <algorithm>
#include <cstddef>

void line_set::add(unsigned long first, unsigned long last) {
    if (first <= last)
        ranges_.push_back({first, last});
}

void line_set::finish() {
    std::sort(ranges_.begin(), ranges_.end(),
              [](const range& a, const range& b) { return a.first < b.first; });
    std::size_t kept = 0;
    for (const range& lines : ranges_) {
        if (kept != 0 && lines.first <= ranges_[kept - 1].last)
            ranges_[kept - 1].last = std::max(ranges_[kept - 1].last, lines.last);
        else
            ranges_[kept++] = lines;
    }
    ranges_.resize(kept);
}

bool line_set::is_in_range(unsigned long line) const {
    const auto after = std::upper_bound(ranges_.begin(), ranges_.end(), line,
                                        [](unsigned long l, const range& lines) { return l < lines.first; });
    return after != ranges_.begin() && line <= (after - 1)->last;
}
