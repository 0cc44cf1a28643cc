#include "import/clang/counter_store.h"

#include <algorithm>

std::uint32_t counter_store::find_entry(const identity& id) const {
    const std::uint32_t first = first_of(id.name);
    if (first == hash_index::kNone || entries_[first].id == id)
        return first;
    return others_.find(mix_hash(id.name, id.structure),
                        [&](std::uint32_t index) { return entries_[index].id == id; });
}

std::uint32_t counter_store::entry_of(const identity& id, std::size_t number) {
    if (expected_ < entries_.size() && entries_[expected_].id == id)
        return expected_;
    const std::uint32_t found = find_entry(id);
    if (found != hash_index::kNone)
        return found;
    std::uint64_t* const counters = counters_.add(number);
    std::fill_n(counters, number, 0);
    const bool first = !knows(id.name);
    const std::uint32_t added = entries_.add({id, counters, number});
    if (first)
        names_.add(id.name, added);
    else
        others_.add(mix_hash(id.name, id.structure), added);
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
