#include "import/lcov/trace_store.h"

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <tuple>
#include <utility>

static bool same_place(const trace_line& a, const trace_line& b) {
    return a.line == b.line;
}

static bool before(const trace_line& a, const trace_line& b) {
    return a.line < b.line;
}

static void add_up(trace_line* line, const trace_line& other) {
    line->counted = line->counted || other.counted;
    line->taken = line->taken || other.taken;
    line->passed = line->passed || other.passed;
    line->count = add_counts(line->count, other.count);
}

static bool same_place(const trace_function& a, const trace_function& b) {
    return a.line == b.line && a.name == b.name;
}

static bool before(const trace_function& a, const trace_function& b) {
    return std::tie(a.line, a.name) < std::tie(b.line, b.name);
}

static void add_up(trace_function* function, const trace_function& other) {
    function->end = std::max(function->end, other.end);
    function->entries = add_counts(function->entries, other.entries);
}

/// Adds up neighbours of one place.
template <typename Item> static void join(std::vector<Item>* items) {
    std::size_t kept = 0;
    for (std::size_t i = 1; i < items->size(); ++i) {
        if (same_place((*items)[kept], (*items)[i]))
            add_up(&(*items)[kept], (*items)[i]);
        else if (++kept != i)
            (*items)[kept] = std::move((*items)[i]);
    }
    if (!items->empty())
        items->resize(kept + 1);
}

/// Adds `more`, in any order, to `items`, which are in order; `more` is used up.
template <typename Item> static void merge(std::vector<Item>* items, std::vector<Item>* more) {
    const auto in_order = [](const Item& a, const Item& b) { return before(a, b); };
    std::stable_sort(more->begin(), more->end(), in_order);
    join(more);
    const auto old = static_cast<std::ptrdiff_t>(items->size());
    items->insert(items->end(), std::make_move_iterator(more->begin()), std::make_move_iterator(more->end()));
    std::inplace_merge(items->begin(), items->begin() + old, items->end(), in_order);
    join(items);
    more->clear();
}

/// Waits until there is about as much to add as there is: many small sections of one file take no longer than
/// a large one.
template <typename Item>
static void collect(const std::vector<Item>& section, std::vector<Item>* more, std::vector<Item>* items) {
    more->insert(more->end(), section.begin(), section.end());
    if (more->size() > items->size())
        merge(items, more);
}

void trace_store::add(const trace_section& section) {
    const std::string path = std::filesystem::path(section.file).lexically_normal().string();
    traced_file& file = files_[names_.name_in_profile(path)];
    collect(section.lines, &file.new_lines, &file.lines);
    collect(section.functions, &file.new_functions, &file.functions);
}

std::map<std::string, traced_file>& trace_store::files() {
    for (auto& [name, file] : files_) {
        merge(&file.lines, &file.new_lines);
        merge(&file.functions, &file.new_functions);
    }
    return files_;
}
