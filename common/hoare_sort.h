// The quicksort behind the sorted lists of a report.
//
// It is C. A. R. Hoare's partition with the middle entry as pivot ("Quicksort", The Computer Journal 5,
// 1962). It is not stable: its exchanges decide in which order entries that compare equal stand, and that
// order is visible.
#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <vector>

/// Parts list[lo .. hi], lo < hi, by its middle entry and returns the last place of the lower part, below
/// `hi`. `compare` gives -order for an entry that belongs behind the pivot, order for one before it, else 0.
template <typename Entry, typename Compare, typename Swap>
int hoare_partition(Entry* list, int lo, int hi, int order, Compare compare, Swap swap) {
    swap(list, lo, lo + (hi - lo) / 2);
    const Entry pivot = list[lo];
    int i = lo - 1;
    int j = hi + 1;
    for (;;) {
        // The bounds are reached only when figures that are not numbers compare like nothing else.
        do
            --j;
        while (j > lo && compare(list[j], pivot) == -order);
        do
            ++i;
        while (i < hi && compare(list[i], pivot) == order);
        if (i >= j)
            return j < hi ? j : hi - 1;
        swap(list, i, j);
    }
}

/// Sorts list[0 .. count-1] by merging if all entries differ, so that any method gives this result; otherwise
/// leaves it as it is and returns false.
template <typename Entry, typename Before> bool sort_distinct(Entry* list, int count, Before before) {
    std::vector<Entry> sorted(list, list + count);
    std::stable_sort(sorted.begin(), sorted.end(), before);
    for (std::size_t i = 1; i < sorted.size(); ++i)
        if (!before(sorted[i - 1], sorted[i]))
            return false;
    std::copy(sorted.begin(), sorted.end(), list);
    return true;
}

/// Sorts list[lo .. hi] with `partition`; `before` tells whether an entry belongs before another. The smaller
/// part is sorted first and the larger one by the same call, so that the depth is at most the logarithm of
/// the count; the parts are independent, so their turn is not visible. Input that keeps the parts uneven
/// `patience` times, which would take quadratic time, is left to sort_distinct where that makes no
/// difference.
template <typename Entry, typename Partition, typename Before>
void hoare_quicksort(Entry* list, int lo, int hi, Partition partition, Before before, int patience) {
    while (lo < hi) {
        if (patience >= 0 && patience-- == 0 && sort_distinct(list + lo, hi - lo + 1, before))
            return;
        const int p = partition(list, lo, hi);
        if (p - lo < hi - p) {
            hoare_quicksort(list, lo, p, partition, before, patience);
            lo = p + 1;
        } else {
            hoare_quicksort(list, p + 1, hi, partition, before, patience);
            hi = p;
        }
    }
}

/// The patience that suits list[lo .. hi]: well above the depth that mixed input needs.
inline int sort_patience(int lo, int hi) {
    return 4 * static_cast<int>(std::bit_width(static_cast<unsigned int>(hi - lo + 1)));
}
