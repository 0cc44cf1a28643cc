// Sorting the functions of a module for its list pages.
//
// Keys by the magnitude of the sort order: 1 name, 2 block coverage, 3 number of blocks. Entries with equal
// keys are told apart by the keys of compare1 to compare3; a descending order reverses these as well.
#pragma once

struct func;

/// Three-way comparisons: -1 when `a` comes first in ascending order, 1 when `b` does, 0 when they are equal.
int compare0(const func* a, const func* b); ///< by first source line
int compare1(const func* a, const func* b); ///< by name, byte by byte; then compare0
int compare2(const func* a, const func* b); ///< by coverage (1 when either is not a number); then compare3
int compare3(const func* a, const func* b); ///< by number of blocks; then compare1

/// Sorts list[0 .. count-1] in place. An order that is not +-1, +-2 or +-3 ends the run with exit status 1.
void SortFunctions(int count, func** list, int order);
