// The quicksort behind the sorted lists of a report.
//
// It is C. A. R. Hoare's partition with the middle entry as pivot ("Quicksort", The Computer Journal 5,
// 1962). It is not stable: its exchanges decide in which order entries that compare equal stand, and that
// order is visible.
#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <numeric>
#include <utility>
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

/// The ranks of the entries of a list, by place: finds the places at which the scans of a partition stop
/// without looking at every entry between. Each operation takes time logarithmic in the count.
class rank_tree {
  public:
    explicit rank_tree(const std::vector<int>& ranks);

    int rank_at(int place) const { return highest_[leaves_ + static_cast<std::size_t>(place)]; }
    void exchange(int a, int b);

    /// The first place from `place` on with at least `rank`, and the last up to `place` with at most `rank`.
    /// There must be one.
    int next_at_least(int place, int rank) const;
    int previous_at_most(int place, int rank) const;

  private:
    void set(std::size_t node, int rank);

    std::size_t leaves_;       ///< a power of two; node i has the children 2i and 2i + 1
    std::vector<int> highest_; ///< rank below each node
    std::vector<int> lowest_;
};

/// The rank of each entry of list[0 .. count-1]: equal for those that compare equal.
template <typename Entry, typename Before>
std::vector<int> ranks_of(const Entry* list, int count, Before before) {
    std::vector<int> order(static_cast<std::size_t>(count));
    std::iota(order.begin(), order.end(), 0);
    std::stable_sort(order.begin(), order.end(), [&](int a, int b) { return before(list[a], list[b]); });
    std::vector<int> ranks(order.size());
    int rank = 0;
    for (std::size_t i = 0; i < order.size(); ++i) {
        if (i > 0 && before(list[order[i - 1]], list[order[i]]))
            ++rank;
        ranks[static_cast<std::size_t>(order[i])] = rank;
    }
    return ranks;
}

/// Sorts list[lo .. hi] with the exchanges of the partition above, whose scans are answered by `ranks`, those
/// of the list from its first place on. Only as many steps as exchanges, which are at most the size of the
/// smaller part.
template <typename Entry> void replay_quicksort(Entry* list, int lo, int hi, rank_tree& ranks) {
    const auto exchange = [&](int a, int b) {
        std::swap(list[a], list[b]);
        ranks.exchange(a, b);
    };
    while (lo < hi) {
        exchange(lo, lo + (hi - lo) / 2);
        const int pivot = ranks.rank_at(lo);
        int i = lo - 1;
        int j = hi + 1;
        for (;;) {
            j = ranks.previous_at_most(j - 1, pivot);
            i = ranks.next_at_least(i + 1, pivot);
            if (i >= j)
                break;
            exchange(i, j);
        }
        if (j - lo < hi - j) {
            replay_quicksort(list, lo, j, ranks);
            lo = j + 1;
        } else {
            replay_quicksort(list, j + 1, hi, ranks);
            hi = j;
        }
    }
}

/// Sorts list[lo .. hi] with `partition`; `before` tells whether an entry belongs before another. The smaller
/// part is sorted first and the larger one by the same call, so that the depth is at most the logarithm of
/// the count; the parts are independent, so their turn is not visible. Where the parts stay uneven `patience`
/// times, which would take quadratic time, the rest is done by replay_quicksort with the same exchanges.
template <typename Entry, typename Partition, typename Before>
void hoare_quicksort(Entry* list, int lo, int hi, Partition partition, Before before, int patience) {
    while (lo < hi) {
        if (patience-- == 0) {
            rank_tree ranks(ranks_of(list + lo, hi - lo + 1, before));
            return replay_quicksort(list + lo, 0, hi - lo, ranks);
        }
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
