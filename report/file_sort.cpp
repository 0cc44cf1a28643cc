#include "report/file_sort.h"

#include "common/checked_alloc.h"
#include "common/number_format.h"
#include "coverage/coverage_list.h"
#include "report/report_sort.h"

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
    // exchanges of the sort give them, which is part of the format of a report (report_sort.h).
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

using file_keys = sort_keys<compare_names, compare_function_coverage, compare_block_coverage>;

static int compareFiles(int i, int j) {
    return file_keys::compare(gSortOrder, i, j);
}

static void swapFiles(int* index, int i, int j) {
    std::swap(index[i], index[j]);
}

static int PartitionFiles(int* index, int lo, int hi) {
    return hoare_partition(index, lo, hi, gSortOrder, compareFiles, swapFiles);
}

static void QuickSortFiles(int* index, int lo, int hi) {
    quick_sort(index, lo, hi, gSortOrder, compareFiles, PartitionFiles);
}

static void SelectSortFiles(int* index, int count) {
    file_keys::select_sort(index, count, gSortOrder, swapFiles);
}

void SortFiles(int* index, int count, int order, filename_list_node* const* list) {
    gSortOrder = order;
    gFilesToSort = list;
    sort_by_count(index, count, SelectSortFiles, QuickSortFiles);
}
