#include "import/clang/counter_store.h"

std::size_t counter_store::entry_of(const identity& id, std::size_t number) {
    if (expected_ < entries_.size() && entries_[expected_].id == id)
        return expected_;
    const auto [found, added] = indices_.emplace(id, entries_.size());
    if (added) {
        entries_.push_back({id, counters_.size(), number});
        counters_.resize(counters_.size() + number);
        names_.insert(id.name);
    }
    return found->second;
}

std::uint64_t* counter_store::counters_of(std::uint64_t name, std::uint64_t structure, std::size_t number) {
    const std::size_t index = entry_of({name, structure}, number);
    expected_ = index + 1;
    if (entries_[index].number != number) {
        ++different_;
        return nullptr;
    }
    return counters_.data() + entries_[index].begin;
}

function_counters counter_store::find(std::uint64_t name, std::uint64_t structure) const {
    const auto found = indices_.find({name, structure});
    if (found == indices_.end())
        return {nullptr, 0};
    const entry& of = entries_[found->second];
    return {counters_.data() + of.begin, of.number};
}
