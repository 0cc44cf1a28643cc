// Sort orders of the function lists and file indexes.
//
// A sort order is a number from -3 to 3: its sign is the direction (positive ascending), its magnitude the
// key, which each list defines. Every order has a page of its own, so that sorting in a browser is a plain
// link.
#pragma once

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
