#include "report/sort_order.h"

#include "common/fatal.h"

#include <cstdio>

const int ref[7][3] = {
    {4, 1, 6}, // -3
    {4, 5, 0}, // -2
    {4, 5, 6}, // -1
    {4, 4, 4}, // 0, which no page has
    {2, 5, 6}, // 1
    {4, 1, 6}, // 2
    {4, 5, 0}, // 3
};

void check_sort_option(int order) {
    if (order >= -3 && order <= 3)
        return;
    std::fprintf(stderr, "Invalid sorting option %d\n", order);
    pgt_Exit(1);
}

void invalid_sort_order(int order) {
    // Deliberate: "oder". Whoever searches logs for this message finds it under its long-standing spelling.
    std::fprintf(stderr, "Internal error: invalid sort oder: %d\n", order);
    pgt_Exit(1);
}
