#include "report/function_sort.h"

#include "common/hoare_sort.h"
#include "coverage/function_table.h"
#include "report/sort_order.h"

#include <cstring>
#include <utility>

static int gSortOrder = 0; ///< order of the list being sorted, set by SortFunctions

int compare0(const func* a, const func* b) {
    if (a->line < b->line)
        return -1;
    return a->line > b->line ? 1 : 0;
}

int compare1(const func* a, const func* b) {
    const int names = std::strcmp(a->name, b->name);
    if (names != 0)
        return names < 0 ? -1 : 1;
    return compare0(a, b);
}

int compare2(const func* a, const func* b) {
    if (a->percent < b->percent)
        return -1;
    return a->percent == b->percent ? compare3(a, b) : 1;
}

int compare3(const func* a, const func* b) {
    if (a->blocks < b->blocks)
        return -1;
    return a->blocks > b->blocks ? 1 : compare1(a, b);
}

/// The comparison of the current order, scaled by it: -gSortOrder when `a` belongs behind `b`, gSortOrder
/// when it belongs before it.
static int compareFunctions(const func* a, const func* b) {
    switch (gSortOrder) {
    case 1:
    case -1:
        return -compare1(a, b);
    case 2:
    case -2:
        return -2 * compare2(a, b);
    case 3:
    case -3:
        return -3 * compare3(a, b);
    default:
        invalid_sort_order(gSortOrder);
    }
}

static void swapFunctions(func** list, int i, int j) {
    std::swap(list[i], list[j]);
}

static int PartitionFunctions(func** list, int lo, int hi) {
    return hoare_partition(list, lo, hi, gSortOrder, compareFunctions, swapFunctions);
}

static void QuickSortFunctions(func** list, int lo, int hi) {
    const auto before = [](const func* a, const func* b) { return compareFunctions(a, b) == gSortOrder; };
    hoare_quicksort(list, lo, hi, PartitionFunctions, before, sort_patience(lo, hi));
}

static void SelectSortFunctions(func** list, int count) {
    const int before = gSortOrder > 0 ? -1 : 1;
    switch (gSortOrder) {
    case 1:
    case -1:
        return exchange_sort(list, count, before, compare1, swapFunctions);
    case 2:
    case -2:
        return exchange_sort(list, count, before, compare2, swapFunctions);
    case 3:
    case -3:
        return exchange_sort(list, count, before, compare3, swapFunctions);
    default:
        invalid_sort_order(gSortOrder);
    }
}

void SortFunctions(int count, func** list, int order) {
    gSortOrder = order;
    if (count < kQuickSortCount)
        SelectSortFunctions(list, count);
    else
        QuickSortFunctions(list, 0, count - 1);
}
