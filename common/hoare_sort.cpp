#include "common/hoare_sort.h"

#include <climits>

rank_tree::rank_tree(const std::vector<int>& ranks)
    : leaves_(std::bit_ceil(ranks.size())), highest_(2 * leaves_, INT_MIN), lowest_(2 * leaves_, INT_MAX) {
    std::copy(ranks.begin(), ranks.end(), highest_.begin() + static_cast<std::ptrdiff_t>(leaves_));
    std::copy(ranks.begin(), ranks.end(), lowest_.begin() + static_cast<std::ptrdiff_t>(leaves_));
    for (std::size_t node = leaves_ - 1; node > 0; --node) {
        highest_[node] = std::max(highest_[2 * node], highest_[2 * node + 1]);
        lowest_[node] = std::min(lowest_[2 * node], lowest_[2 * node + 1]);
    }
}

void rank_tree::set(std::size_t node, int rank) {
    highest_[node] = rank;
    lowest_[node] = rank;
    for (node /= 2; node > 0; node /= 2) {
        highest_[node] = std::max(highest_[2 * node], highest_[2 * node + 1]);
        lowest_[node] = std::min(lowest_[2 * node], lowest_[2 * node + 1]);
    }
}

void rank_tree::exchange(int a, int b) {
    const int rank_a = rank_at(a);
    const int rank_b = rank_at(b);
    if (rank_a == rank_b)
        return;
    set(leaves_ + static_cast<std::size_t>(a), rank_b);
    set(leaves_ + static_cast<std::size_t>(b), rank_a);
}

int rank_tree::next_at_least(int place, int rank) const {
    std::size_t node = leaves_ + static_cast<std::size_t>(place);
    while (highest_[node] < rank) {
        while (node % 2 == 1)
            node /= 2;
        ++node;
    }
    while (node < leaves_) {
        node *= 2;
        if (highest_[node] < rank)
            ++node;
    }
    return static_cast<int>(node - leaves_);
}

int rank_tree::previous_at_most(int place, int rank) const {
    std::size_t node = leaves_ + static_cast<std::size_t>(place);
    while (lowest_[node] > rank) {
        while (node % 2 == 0)
            node /= 2;
        --node;
    }
    while (node < leaves_) {
        node = 2 * node + 1;
        if (lowest_[node] > rank)
            --node;
    }
    return static_cast<int>(node - leaves_);
}
