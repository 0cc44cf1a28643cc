#include "import/record_store.h"

#include "import/gcc/sorted_merge.h"
#include "import/place_names.h"

#include <algorithm>
#include <functional>
#include <tuple>

constexpr std::uint32_t kNone = 0xffffffff;

/// While instances are added, the longest code region at each start is marked by this, a value that
/// region_kind does not have.
constexpr std::uint32_t kLongest = 3;
constexpr std::uint32_t kCode = static_cast<std::uint32_t>(region_kind::code);

static std::uint64_t mix(std::uint64_t hash, std::uint64_t value) {
    return (hash ^ value) * 0x9e3779b97f4a7c15U + (hash >> 29);
}

/// Counts do not count: the same function of another run must be found.
static std::uint64_t hash_of(std::uint32_t file, std::string_view name,
                             const std::vector<source_region>& regions) {
    std::uint64_t hash = mix(std::hash<std::string_view>()(name), file);
    for (const source_region& region : regions) {
        hash = mix(hash, (std::uint64_t{region.start.line} << 32) | region.start.column);
        hash = mix(hash, (std::uint64_t{region.end_line} << 32) | (std::uint64_t{region.end_column} << 2) |
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

static bool same_place(const source_region& a, const source_region& b) {
    return same_region(a, b);
}

/// The order of main_file_function.
static bool before(const source_region& a, const source_region& b) {
    if (a.start != b.start)
        return a.start < b.start;
    return std::tuple(b.end(), a.kind_bits) < std::tuple(a.end(), b.kind_bits);
}

static void add_up(source_region* region, const source_region& other) {
    region->count = add_counts(region->count, other.count);
}

static void add_up(std::vector<source_region>* regions, const std::vector<source_region>& others) {
    for (std::size_t i = 0; i < regions->size(); ++i)
        add_up(&(*regions)[i], others[i]);
}

static void mark_longest(std::vector<source_region>* regions) {
    source_position last = {0, 0};
    for (source_region& region : *regions) {
        if (region.kind_bits != kCode || region.start == last)
            continue;
        last = region.start;
        region.kind_bits = kLongest;
    }
}

/// Instances differ in how long the code at one place is: of a branch that the compiler has discarded, a part
/// is left. All of them are the longest one.
static void join_longest(std::vector<source_region>* regions) {
    source_region* longest = nullptr;
    std::size_t kept = 0;
    for (const source_region& region : *regions) {
        if (region.kind_bits == kLongest && longest && longest->start == region.start) {
            add_up(longest, region);
            continue;
        }
        (*regions)[kept] = region;
        if (region.kind_bits == kLongest)
            longest = &(*regions)[kept];
        ++kept;
    }
    regions->resize(kept);
    for (source_region& region : *regions) {
        if (region.kind_bits == kLongest)
            region.kind_bits = kCode;
    }
    if (!std::is_sorted(regions->begin(), regions->end(), before)) // at one place, the kind was in the order
        std::sort(regions->begin(), regions->end(), before);
}

/// What one instance skips may be the code of another.
static void drop_executed_skips(std::vector<source_region>* regions) {
    std::vector<source_position> starts;
    for (const source_region& region : *regions) {
        if (region.kind_bits == kCode)
            starts.push_back(region.start);
    }
    std::erase_if(*regions, [&starts](const source_region& region) {
        if (region.kind() != region_kind::skipped)
            return false;
        const auto inside = std::lower_bound(starts.begin(), starts.end(), region.start);
        return inside != starts.end() && *inside < region.end();
    });
}

static std::uint64_t hash_of_place(std::uint32_t file, std::string_view name, source_position start) {
    return mix(mix(std::hash<std::string_view>()(name), file),
               (std::uint64_t{start.line} << 32) | start.column);
}

std::uint32_t record_store::file_index(const std::string& file) {
    if (last_file_ < files_.size() && files_[last_file_] == file)
        return last_file_;
    const auto [entry, added] = file_indices_.try_emplace(file, static_cast<std::uint32_t>(files_.size()));
    if (added)
        files_.push_back(file);
    last_file_ = entry->second;
    return last_file_;
}

void record_store::add(const std::string& file, std::string_view name, const main_file_function& function) {
    const std::uint32_t index = file_index(file);
    const auto head = heads_.try_emplace(hash_of(index, name, function.regions), kNone).first;
    for (std::uint32_t i = head->second; i != kNone; i = functions_[i].next) {
        stored_function& entry = functions_[i];
        if (entry.file != index || entry.is_template || entry.name != name ||
            !same_regions(entry.regions, function.regions))
            continue;
        entry.count = add_counts(entry.count, function.count);
        return add_up(&entry.regions, function.regions);
    }
    append(index, name, function, &head->second);
}

/// A new entry, which becomes the first of its chain.
void record_store::append(std::uint32_t file, std::string_view name, const main_file_function& function,
                          std::uint32_t* head) {
    functions_.push_back(
        {file, *head, false, std::string(name), function.count, function.extent, function.regions, {}});
    *head = static_cast<std::uint32_t>(functions_.size() - 1);
}

void record_store::add_instance(const std::string& file, std::string_view name,
                                const main_file_function& function) {
    const std::uint32_t index = file_index(file);
    const source_position start = function.extent.start;
    const auto head = heads_.try_emplace(hash_of_place(index, name, start), kNone).first;
    instance_ = function.regions;
    mark_longest(&instance_);
    for (std::uint32_t i = head->second; i != kNone; i = functions_[i].next) {
        stored_function& entry = functions_[i];
        if (entry.file != index || !entry.is_template || entry.name != name || entry.extent.start != start)
            continue;
        entry.count = add_counts(entry.count, function.count);
        entry.extent.end = std::max(entry.extent.end, function.extent.end);
        if (same_regions(entry.regions, instance_))
            return add_up(&entry.regions, instance_);
        return collect_in_order(&entry.regions, &entry.more, instance_.begin(), instance_.end());
    }
    append(index, name, function, &head->second);
    functions_.back().is_template = true;
    functions_.back().regions = instance_;
}

static void add_up(stored_function* entry, const stored_function& other) {
    entry->count = add_counts(entry->count, other.count);
    entry->extent.end = std::max(entry->extent.end, other.extent.end);
    collect_in_order(&entry->regions, &entry->more, other.regions.begin(), other.regions.end());
}

void record_store::unite_friends() {
    std::vector<named_place> places;
    for (std::uint32_t i = 0; i < functions_.size(); ++i) {
        if (!functions_[i].is_template)
            places.push_back({functions_[i].file, functions_[i].extent.start, &functions_[i].name, i});
    }
    for (namesakes& friends : find_friends(std::move(places))) {
        stored_function& first = functions_[friends.indices.front()];
        for (const std::uint32_t i : friends.indices) {
            mark_longest(&functions_[i].regions);
            if (i == friends.indices.front())
                continue;
            add_up(&first, functions_[i]);
            functions_[i].regions.clear();
        }
        first.is_template = true;
        first.name = std::move(friends.name);
    }
    std::erase_if(functions_, [](const stored_function& function) { return function.regions.empty(); });
}

void record_store::unite_instances() {
    unite_friends();
    std::vector<named_place> places;
    for (stored_function& entry : functions_) {
        if (!entry.is_template)
            continue;
        merge_in_order(&entry.regions, &entry.more);
        join_longest(&entry.regions);
        drop_executed_skips(&entry.regions);
        places.push_back({entry.file, entry.extent.start, &entry.name});
    }
    tell_apart(std::move(places));
}
