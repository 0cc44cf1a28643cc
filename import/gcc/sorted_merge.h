// Lists in order whose items are added up when they come again.
//
// An item type has three functions beside it: before(a, b), the order; same_place(a, b), whether they are
// one; and add_up(&a, b).
#pragma once

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <utility>
#include <vector>

/// Adds up neighbours of one place.
template <typename Item> void join_neighbours(std::vector<Item>* items) {
    std::size_t kept = 0;
    for (std::size_t i = 1; i < items->size(); ++i) {
        if (same_place((*items)[kept], (*items)[i]))
            add_up(&(*items)[kept], (*items)[i]);
        else if (++kept != i)
            (*items)[kept] = std::move((*items)[i]);
    }
    if (!items->empty())
        items->erase(items->begin() + static_cast<std::ptrdiff_t>(kept) + 1, items->end());
}

/// Adds `more`, in any order, to `items`, which are in order, each place once; `more` is empty then.
template <typename Item> void merge_in_order(std::vector<Item>* items, std::vector<Item>* more) {
    if (more->empty())
        return;
    const auto in_order = [](const Item& a, const Item& b) { return before(a, b); };
    if (!std::is_sorted(more->begin(), more->end(), in_order)) // they often are
        std::stable_sort(more->begin(), more->end(), in_order);
    join_neighbours(more);
    const auto old = static_cast<std::ptrdiff_t>(items->size());
    items->insert(items->end(), std::make_move_iterator(more->begin()), std::make_move_iterator(more->end()));
    std::inplace_merge(items->begin(), items->begin() + old, items->end(), in_order);
    join_neighbours(items);
    more->clear();
}

/// Adds items of the range to `more`, and that to `items` when it has become larger: adding few at a time
/// takes no longer than all at once, and memory stays within a small multiple of what there is.
template <typename Item, typename Iterator>
void collect_in_order(std::vector<Item>* items, std::vector<Item>* more, Iterator begin, Iterator end) {
    more->insert(more->end(), begin, end);
    if (more->size() > items->size())
        merge_in_order(items, more);
}
