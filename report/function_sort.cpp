#include "report/function_sort.h"

#include "coverage/function_table.h"
#include "report/report_sort.h"

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

using function_keys = sort_keys<compare1, compare2, compare3>;

static int compareFunctions(const func* a, const func* b) {
    return function_keys::compare(gSortOrder, a, b);
}

static void swapFunctions(func** list, int i, int j) {
    std::swap(list[i], list[j]);
}

static int PartitionFunctions(func** list, int lo, int hi) {
    return hoare_partition(list, lo, hi, gSortOrder, compareFunctions, swapFunctions);
}

static void QuickSortFunctions(func** list, int lo, int hi) {
    quick_sort(list, lo, hi, gSortOrder, compareFunctions, PartitionFunctions);
}

static void SelectSortFunctions(func** list, int count) {
    function_keys::select_sort(list, count, gSortOrder, swapFunctions);
}

void SortFunctions(int count, func** list, int order) {
    gSortOrder = order;
    sort_by_count(list, count, SelectSortFunctions, QuickSortFunctions);
}
