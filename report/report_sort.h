// The sorting that the function lists and the file indexes share: by one of three keys, up or down.
//
// Entries that compare equal are placed by the exchanges made, which is visible in the pages: the two methods
// and the count at which one takes over from the other are part of the format of a report.
#pragma once

#include "common/hoare_sort.h"
#include "report/sort_order.h"

/// Count from which on a list is sorted by quicksort instead of exchange sort.
constexpr int kQuickSortCount = 32;

/// Exchange sort of list[0 .. count-1]: wherever `By` of a later and an earlier entry gives `before`, the two
/// change places.
template <auto By, typename Entry, typename Swap>
void exchange_sort(Entry* list, int count, int before, Swap swap) {
    for (int i = 0; i < count - 1; ++i)
        for (int j = i + 1; j < count; ++j)
            if (By(list[j], list[i]) == before)
                swap(list, i, j);
}

/// The three-way comparisons of a list's entries, by the magnitude of the order: -1 when the first comes
/// first in ascending order. An order without a key ends the run in both functions.
template <auto By1, auto By2, auto By3> struct sort_keys {
    /// The comparison of `order`, scaled by it: -order when `a` belongs behind `b`, order when before it.
    template <typename Entry> static int compare(int order, Entry a, Entry b) {
        switch (order) {
        case 1:
        case -1:
            return -By1(a, b);
        case 2:
        case -2:
            return -2 * By2(a, b);
        case 3:
        case -3:
            return -3 * By3(a, b);
        default:
            invalid_sort_order(order);
        }
    }

    template <typename Entry, typename Swap>
    static void select_sort(Entry* list, int count, int order, Swap swap) {
        const int before = order > 0 ? -1 : 1;
        switch (order) {
        case 1:
        case -1:
            return exchange_sort<By1>(list, count, before, swap);
        case 2:
        case -2:
            return exchange_sort<By2>(list, count, before, swap);
        case 3:
        case -3:
            return exchange_sort<By3>(list, count, before, swap);
        default:
            invalid_sort_order(order);
        }
    }
};

/// Sorts list[0 .. count-1] with the method for so many entries, `select(list, count)` or `quick(list, lo,
/// hi)`.
template <typename Entry, typename Select, typename Quick>
void sort_by_count(Entry* list, int count, Select select, Quick quick) {
    if (count < kQuickSortCount)
        select(list, count);
    else
        quick(list, 0, count - 1);
}

/// Quicksort of list[lo .. hi]; `compare` and `partition` are those of `order`.
template <typename Entry, typename Compare, typename Partition>
void quick_sort(Entry* list, int lo, int hi, int order, Compare compare, Partition partition) {
    const auto before = [=](const Entry& a, const Entry& b) { return compare(a, b) == order; };
    hoare_quicksort(list, lo, hi, partition, before, sort_patience(lo, hi));
}
