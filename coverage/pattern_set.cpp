#include "coverage/pattern_set.h"

#include <algorithm>
#include <iterator>

void pattern_set::clear() {
    states_.assign(1, state());
    std::fill(std::begin(root_children_), std::end(root_children_), 0);
}

/// The state that `byte` leads to from `from`, or 0.
std::uint32_t pattern_set::child(std::uint32_t from, unsigned char byte) const {
    if (from == 0)
        return root_children_[byte];
    std::uint32_t candidate = states_[from].first_child;
    while (candidate != 0 && states_[candidate].byte != byte)
        candidate = states_[candidate].next_sibling;
    return candidate;
}

/// The state after `byte`, through shorter suffixes where there is no edge.
std::uint32_t pattern_set::next(std::uint32_t from, unsigned char byte) const {
    std::uint32_t to = child(from, byte);
    while (to == 0 && from != 0) {
        from = states_[from].suffix;
        to = child(from, byte);
    }
    return to;
}

void pattern_set::add(std::string_view pattern, std::uint8_t bits) {
    std::uint32_t current = 0;
    for (const char c : pattern) {
        const unsigned char byte = static_cast<unsigned char>(c);
        std::uint32_t to = child(current, byte);
        if (to == 0) {
            to = static_cast<std::uint32_t>(states_.size());
            states_.push_back({0, states_[current].first_child, 0, byte, 0});
            states_[current].first_child = to;
            if (current == 0)
                root_children_[byte] = to;
        }
        current = to;
    }
    states_[current].bits |= bits;
}

void pattern_set::prepare() {
    // Breadth first: a state's suffix is shorter than the state and so is finished before it.
    std::vector<std::uint32_t> order(1, 0);
    order.reserve(states_.size());
    for (std::size_t i = 0; i < order.size(); ++i) {
        const std::uint32_t from = order[i];
        for (std::uint32_t to = states_[from].first_child; to != 0; to = states_[to].next_sibling) {
            if (from != 0)
                states_[to].suffix = next(states_[from].suffix, states_[to].byte);
            states_[to].bits |= states_[states_[to].suffix].bits;
            order.push_back(to);
        }
    }
}

std::uint8_t pattern_set::match(std::string_view text, std::uint8_t enough) const {
    std::uint32_t current = 0;
    std::uint8_t bits = states_[0].bits;
    for (std::size_t i = 0; i < text.size() && (bits & enough) == 0; ++i) {
        current = next(current, static_cast<unsigned char>(text[i]));
        bits |= states_[current].bits;
    }
    return bits;
}
