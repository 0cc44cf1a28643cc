// Sort orders of the function lists and file indexes, and the sorting that both share.
//
// A sort order is a number from -3 to 3: its sign is the direction (positive ascending), its magnitude the
// key, which each list defines. Every order has a page of its own, so that sorting in a browser is a plain
// link.
//
// Entries that compare equal are placed by the exchanges made, which is visible in the pages: the two methods
// and the count at which one takes over from the other are part of the format of a report.
#pragma once

/// Count from which on a list is sorted by quicksort instead of exchange sort.
constexpr int kQuickSortCount = 32;

/// File number of the page of an order.
constexpr int page_number(int order) {
    return order + 3;
}

/// File number of the page that a column title leads to, by page_number of the page it stands on and by the
/// key that the column sorts by, less 1. Deliberate: the title of the sort key turns the direction round and
/// any other title leads to its ascending page, except that the two descending figures lead to each other:
/// whoever looks at the highest figures first goes on doing so when the figure changes.
extern const int ref[7][3];

/// Ends the run with "Invalid sorting option %d" on standard error and exit status 1 unless -3 <= order <= 3.
void check_sort_option(int order);

/// Ends the run with "Internal error: invalid sort oder: %d" on standard error and exit status 1: the list
/// has no such key.
[[noreturn]] void invalid_sort_order(int order);

/// Exchange sort of list[0 .. count-1]: wherever `compare` of a later and an earlier entry gives `before`,
/// the two change places.
template <typename Entry, typename Compare, typename Swap>
void exchange_sort(Entry* list, int count, int before, Compare compare, Swap swap) {
    for (int i = 0; i < count - 1; ++i)
        for (int j = i + 1; j < count; ++j)
            if (compare(list[j], list[i]) == before)
                swap(list, i, j);
}
