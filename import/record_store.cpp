#include "import/record_store.h"

#include <algorithm>
#include <functional>

constexpr std::uint32_t kNone = 0xffffffff;

static std::size_t mix(std::size_t hash, std::size_t value) {
    return (hash ^ value) * 0x9e3779b97f4a7c15U + (hash >> 29);
}

/// Counts do not count: the same function of another run must be found.
static std::size_t hash_of(std::uint32_t file, std::string_view name,
                           const std::vector<source_region>& regions) {
    std::size_t hash = mix(std::hash<std::string_view>()(name), file);
    for (const source_region& region : regions) {
        hash = mix(hash, (std::size_t{region.start.line} << 32) | region.start.column);
        hash = mix(hash, (std::size_t{region.end_line} << 32) | (std::size_t{region.end_column} << 2) |
                             region.kind_bits);
    }
    return hash;
}

static bool same_region(const source_region& a, const source_region& b) {
    return a.start == b.start && a.end() == b.end() && a.kind_bits == b.kind_bits;
}

static bool same_regions(const std::vector<source_region>& a, const std::vector<source_region>& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), same_region);
}

static void add_up(stored_function* entry, const main_file_function& function) {
    entry->count = add_counts(entry->count, function.count);
    for (std::size_t i = 0; i < entry->regions.size(); ++i)
        entry->regions[i].count = add_counts(entry->regions[i].count, function.regions[i].count);
}

std::uint32_t record_store::file_index(const std::string& file) {
    const auto [entry, added] = file_indices_.emplace(file, static_cast<std::uint32_t>(files_.size()));
    if (added)
        files_.push_back(file);
    return entry->second;
}

void record_store::add(const std::string& file, std::string_view name, const main_file_function& function) {
    const std::uint32_t index = file_index(file);
    const auto head = heads_.emplace(hash_of(index, name, function.regions), kNone).first;
    for (std::uint32_t i = head->second; i != kNone; i = functions_[i].next) {
        stored_function& entry = functions_[i];
        if (entry.file == index && entry.name == name && same_regions(entry.regions, function.regions))
            return add_up(&entry, function);
    }
    stored_function entry = {index,          head->second,    std::string(name),
                             function.count, function.extent, function.regions};
    head->second = static_cast<std::uint32_t>(functions_.size());
    functions_.push_back(std::move(entry));
}
