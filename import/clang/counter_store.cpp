#include "import/clang/counter_store.h"

#include <algorithm>

std::uint32_t counter_store::find_entry(const identity& id) const {
    return indices_.find(mix_hash(id.name, id.structure),
                         [&](std::uint32_t index) { return entries_[index].id == id; });
}

std::uint32_t counter_store::entry_of(const identity& id, std::size_t number) {
    if (expected_ < entries_.size() && entries_[expected_].id == id)
        return expected_;
    const std::uint32_t found = find_entry(id);
    if (found != hash_index::kNone)
        return found;
    const std::uint32_t added = static_cast<std::uint32_t>(entries_.size());
    if (!knows(id.name))
        names_.add(id.name, added);
    indices_.add(mix_hash(id.name, id.structure), added);
    std::uint64_t* const counters = counters_.add(number);
    std::fill_n(counters, number, 0);
    entries_.push_back({id, counters, number});
    return added;
}

std::uint64_t* counter_store::counters_of(std::uint64_t name, std::uint64_t structure, std::size_t number) {
    const std::uint32_t index = entry_of({name, structure}, number);
    expected_ = index + 1;
    if (entries_[index].number != number) {
        ++different_;
        return nullptr;
    }
    return entries_[index].counters;
}

function_counters counter_store::find(std::uint64_t name, std::uint64_t structure) const {
    const std::uint32_t found = find_entry({name, structure});
    if (found == hash_index::kNone)
        return {nullptr, 0};
    return {entries_[found].counters, entries_[found].number};
}
