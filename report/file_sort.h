// Sorting the source files of the run for their index pages.
//
// The files themselves are not moved: an array of positions in the list is sorted, and a page is written in
// its order. Keys by the magnitude of the sort order: 1 file name, 2 function coverage, 3 block coverage.
#pragma once

struct filename_list_node;

/// An array of `count` numbers 0, 1, ..., count - 1. The caller owns it; release with free().
int* CreateIndex(int count);

/// By the last component of the two paths, byte by byte: -1 when `a` comes first in ascending order, 1 when
/// `b` does, 0 for files of the same name in different directories.
int compare1(const filename_list_node* a, const filename_list_node* b);

/// By the figures `x` of `a` and `y` of `b` (1 when either is not a number), then by compare1.
int compare23(double x, double y, const filename_list_node* a, const filename_list_node* b);

/// Sorts the numbers index[0 .. count-1] by the files of `list` that they stand for. Files that compare equal
/// are placed by the method and the order at the start. An order that is not +-1, +-2 or +-3 ends the run
/// with exit status 1.
void SortFiles(int* index, int count, int order, filename_list_node* const* list);
