#include "analysis/position_table.h"

#include <algorithm>
#include <new>
#include <unistd.h>

constexpr std::size_t kFirstSlots = 1024; ///< 4 KiB

std::uint32_t count_lines(std::string_view text) {
    std::uint32_t lines = 0;
    for (std::size_t at = 0; at < text.size(); ++lines) {
        const std::size_t newline = text.find('\n', at);
        at = newline == std::string_view::npos ? text.size() : newline + 1;
    }
    return lines;
}

/// Order of the positions in the source.
static bool lies_before(const block_list_node& a, const block_list_node& b) {
    return a.line != b.line ? a.line < b.line : a.column < b.column;
}

/// Differs from run to run, so that no input can be made whose positions collide. The order in the table is
/// never visible.
static std::uint64_t random_seed() {
    std::uint64_t seed = 0;
    if (getentropy(&seed, sizeof seed) != 0)
        seed = static_cast<std::uint64_t>(getpid()); // infeasible
    return seed;
}
static const std::uint64_t hash_seed = random_seed();

/// The slot that holds the position, or the free one where it belongs.
std::size_t position_table::slot_of(std::uint32_t line, std::uint32_t column) const {
    std::uint64_t hash = (std::uint64_t{line} << 32 | column) + hash_seed;
    hash = (hash ^ hash >> 30) * 0xBF58476D1CE4E5B9;
    hash = (hash ^ hash >> 27) * 0x94D049BB133111EB;
    hash ^= hash >> 31;
    const std::size_t mask = slots_.size() - 1;
    std::size_t slot = static_cast<std::size_t>(hash) & mask;
    while (slots_[slot] != 0) {
        const block_list_node& node = nodes_[slots_[slot] - 1];
        if (node.line == line && node.column == column)
            break;
        slot = (slot + 1) & mask;
    }
    return slot;
}

/// Enters all nodes into a hash table of at least twice their number.
void position_table::rehash(std::size_t slotCount) {
    slots_.assign(slotCount, 0);
    for (std::size_t i = 0; i < nodes_.size(); ++i)
        slots_[slot_of(nodes_[i].line, nodes_[i].column)] = static_cast<std::uint32_t>(i + 1);
    sorted_ = false;
}

block_list_node* position_table::find_or_create(std::uint32_t line, std::uint32_t column) {
    // Deliberate: where the source has become shorter than what was compiled, its blocks still count; they
    // show at its beginning.
    if (line > lines_)
        line = column = 1;
    try {
        const bool full = nodes_.size() * 2 >= slots_.size();
        if (sorted_ || full)
            rehash(std::max(kFirstSlots, slots_.size() * (full ? 2 : 1)));
        const std::size_t slot = slot_of(line, column);
        if (slots_[slot] == 0) {
            nodes_.push_back({line, column, 0, 0, 0, 0, 0, 0});
            slots_[slot] = static_cast<std::uint32_t>(nodes_.size());
        }
        return &nodes_[slots_[slot] - 1];
    } catch (const std::bad_alloc&) {
        return nullptr; // infeasible
    }
}

const block_list_node* position_table::find(std::uint32_t line, std::uint32_t column) const {
    if (!sorted_) {
        const std::uint32_t entry = slots_.empty() ? 0 : slots_[slot_of(line, column)];
        return entry == 0 ? nullptr : &nodes_[entry - 1];
    }
    const block_list_node wanted = {line, column, 0, 0, 0, 0, 0, 0};
    const auto found = std::lower_bound(nodes_.begin(), nodes_.end(), wanted, lies_before);
    return found != nodes_.end() && !lies_before(wanted, *found) ? &*found : nullptr;
}

void position_table::sort() {
    if (sorted_)
        return;
    std::sort(nodes_.begin(), nodes_.end(),
              [](const block_list_node& a, const block_list_node& b) { return lies_before(a, b); });
    sorted_ = true;
}

bool position_table::add_block(std::uint32_t line, std::uint32_t column, std::uint64_t count,
                               bool notInReference, std::uint32_t** ppUnexecuted) {
    if (ppUnexecuted)
        *ppUnexecuted = nullptr;
    block_list_node* node = find_or_create(line, column);
    if (!node)
        return false;
    if (count == NEVER_ENTERED) {
        if (node->count == 0)
            node->count = NEVER_ENTERED;
    } else if (node->count == NEVER_ENTERED) {
        node->count = count;
    } else {
        node->count += count; // Deliberate: wraps, as the instrumented program's own counters do
    }
    node->bNotInRef |= notInReference ? 1U : 0U;
    ++node->numBlocks;
    ++(count == 0 ? node->numUnexecuted : node->numExecuted);
    if (ppUnexecuted && node->numExecuted > 0)
        *ppUnexecuted = &node->numUnexecuted;
    return true;
}

bool position_table::adjust(std::uint32_t line, std::uint32_t column) {
    block_list_node* node = find_or_create(line, column);
    if (!node)
        return false;
    ++node->count;
    ++node->numBlocks;
    ++node->numExecuted;
    node->numUnexecuted = 0;
    ++node->numAdjusted;
    return true;
}
