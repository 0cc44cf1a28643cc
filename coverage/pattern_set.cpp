#include "coverage/pattern_set.h"

#include <algorithm>

void pattern_set::clear() {
    states_.assign(1, state());
    edges_.clear();
    edge_order_.clear();
}

void pattern_set::add(std::string_view pattern, std::uint8_t bits) {
    std::uint32_t current = 0;
    for (const char c : pattern) {
        const std::uint64_t key = edge(current, static_cast<unsigned char>(c));
        const auto [position, added] = edges_.try_emplace(key, static_cast<std::uint32_t>(states_.size()));
        if (added) {
            states_.emplace_back();
            edge_order_.push_back(key);
        }
        current = position->second;
    }
    states_[current].bits |= bits;
}

void pattern_set::prepare() {
    // Breadth first: a state's suffix is shorter than the state and so is finished before it.
    std::vector<std::uint32_t> depth(states_.size(), 0);
    for (const std::uint64_t key : edge_order_)
        depth[edges_.at(key)] = depth[key >> 8] + 1;
    std::stable_sort(edge_order_.begin(), edge_order_.end(),
                     [&](std::uint64_t a, std::uint64_t b) { return depth[a >> 8] < depth[b >> 8]; });
    for (const std::uint64_t key : edge_order_) {
        const std::uint32_t target = edges_.at(key);
        std::uint32_t from = static_cast<std::uint32_t>(key >> 8);
        while (from != 0) {
            from = states_[from].suffix;
            const auto found = edges_.find(edge(from, static_cast<unsigned char>(key & 0xFF)));
            if (found != edges_.end()) {
                states_[target].suffix = found->second;
                break;
            }
        }
        states_[target].bits |= states_[states_[target].suffix].bits;
    }
}

std::uint8_t pattern_set::match(std::string_view text, std::uint8_t enough) const {
    std::uint32_t current = 0;
    std::uint8_t bits = states_[0].bits;
    for (std::size_t i = 0; i < text.size() && (bits & enough) == 0; ++i) {
        const unsigned char byte = static_cast<unsigned char>(text[i]);
        auto found = edges_.find(edge(current, byte));
        while (found == edges_.end() && current != 0) {
            current = states_[current].suffix;
            found = edges_.find(edge(current, byte));
        }
        current = found == edges_.end() ? 0 : found->second;
        bits |= states_[current].bits;
    }
    return bits;
}
