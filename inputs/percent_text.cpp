#include "inputs/percent_text.h"

#include <algorithm>
#include <cstdio>
#include <limits>

std::int64_t ten_thousandths(const covered_count& count) {
    constexpr std::int64_t kMost = std::numeric_limits<std::int64_t>::max() / 10000;
    const std::int64_t covered = std::max<std::int64_t>(count.covered, 0);
    if (count.total <= 0)
        return 0;
    return covered <= kMost ? covered * 10000 / count.total : covered / (count.total / 10000);
}

std::string percent_text(const covered_count& count) {
    const std::int64_t hundredths = ten_thousandths(count);
    char text[32];
    std::snprintf(text, sizeof text, "%lld.%02d", static_cast<long long>(hundredths / 100),
                  static_cast<int>(hundredths % 100));
    return text;
}
