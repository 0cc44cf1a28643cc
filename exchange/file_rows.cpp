#include "exchange/file_rows.h"

bool less_covered(const covered_count& a, const covered_count& b) {
    const auto part = [](const covered_count& count) {
        return count.total <= 0
                   ? 1.0L
                   : static_cast<long double>(count.covered) / static_cast<long double>(count.total);
    };
    return part(a) < part(b);
}
