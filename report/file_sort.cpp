#include "report/file_sort.h"

#include "common/checked_alloc.h"
#include "common/hoare_sort.h"
#include "common/number_format.h"
#include "coverage/coverage_list.h"
#include "report/sort_order.h"

#include <cstddef>
#include <cstring>
#include <utility>

// Set by SortFiles for the comparisons.
static int gSortOrder = 0;                                ///< order of the index being sorted
static filename_list_node* const* gFilesToSort = nullptr; ///< the files its numbers stand for; borrowed

int* CreateIndex(int count) {
    int* index = static_cast<int*>(pmalloc(static_cast<std::size_t>(count) * sizeof(int), "file index"));
    for (int i = 0; i < count; ++i)
        index[i] = i;
    return index;
}

int compare1(const filename_list_node* a, const filename_list_node* b) {
    // Deliberate: no further key. Files of the same name in different directories keep the place that the
    // exchanges of the sort give them, which is part of the format of a report (sort_order.h).
    const int names = std::strcmp(brief(a->name), brief(b->name));
    return names < 0 ? -1 : names > 0 ? 1 : 0;
}

int compare23(double x, double y, const filename_list_node* a, const filename_list_node* b) {
    if (x < y)
        return -1;
    return x == y ? compare1(a, b) : 1;
}

static int compare_names(int i, int j) {
    return compare1(gFilesToSort[i], gFilesToSort[j]);
}

static int compare_function_coverage(int i, int j) {
    const filename_list_node* a = gFilesToSort[i];
    const filename_list_node* b = gFilesToSort[j];
    return compare23(a->funcCoverage, b->funcCoverage, a, b);
}

static int compare_block_coverage(int i, int j) {
    const filename_list_node* a = gFilesToSort[i];
    const filename_list_node* b = gFilesToSort[j];
    return compare23(a->blockCoverage, b->blockCoverage, a, b);
}

/// The comparison of the current order, scaled by it: -gSortOrder when file `i` belongs behind file `j`,
/// gSortOrder when it belongs before it.
static int compareFiles(int i, int j) {
    switch (gSortOrder) {
    case 1:
    case -1:
        return -compare_names(i, j);
    case 2:
    case -2:
        return -2 * compare_function_coverage(i, j);
    case 3:
    case -3:
        return -3 * compare_block_coverage(i, j);
    default:
        invalid_sort_order(gSortOrder);
    }
}

static void swapFiles(int* index, int i, int j) {
    std::swap(index[i], index[j]);
}

static int PartitionFiles(int* index, int lo, int hi) {
    return hoare_partition(index, lo, hi, gSortOrder, compareFiles, swapFiles);
}

static void QuickSortFiles(int* index, int lo, int hi) {
    const auto before = [](int i, int j) { return compareFiles(i, j) == gSortOrder; };
    hoare_quicksort(index, lo, hi, PartitionFiles, before, sort_patience(lo, hi));
}

static void SelectSortFiles(int* index, int count) {
    const int before = gSortOrder > 0 ? -1 : 1;
    switch (gSortOrder) {
    case 1:
    case -1:
        return exchange_sort(index, count, before, compare_names, swapFiles);
    case 2:
    case -2:
        return exchange_sort(index, count, before, compare_function_coverage, swapFiles);
    case 3:
    case -3:
        return exchange_sort(index, count, before, compare_block_coverage, swapFiles);
    default:
        invalid_sort_order(gSortOrder);
    }
}

void SortFiles(int* index, int count, int order, filename_list_node* const* list) {
    gSortOrder = order;
    gFilesToSort = list;
    if (count < kQuickSortCount)
        SelectSortFiles(index, count);
    else
        QuickSortFiles(index, 0, count - 1);
}
