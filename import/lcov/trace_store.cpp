#include "import/lcov/trace_store.h"

#include "demangle/shared_name.h"
#include "import/gcc/sorted_merge.h"
#include "import/place_names.h"

#include <algorithm>
#include <filesystem>
#include <tuple>

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

static bool same_place(const trace_branch& a, const trace_branch& b) {
    return a.line == b.line && a.id == b.id;
}

static bool before(const trace_branch& a, const trace_branch& b) {
    return std::tie(a.line, a.id) < std::tie(b.line, b.id);
}

static void add_up(trace_branch* branch, const trace_branch& other) {
    branch->taken = branch->taken || other.taken;
    branch->exception = branch->exception && other.exception;
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

void trace_store::add(const trace_section& section) {
    const std::string path = std::filesystem::path(section.file).lexically_normal().string();
    const std::string name = names_.name_in_profile(path);
    if (!names_.is_wanted(name))
        return left_out_.add(name);
    traced_file& file = files_[name];
    collect_in_order(&file.lines, &file.new_lines, section.lines.begin(), section.lines.end());
    collect_in_order(&file.branches, &file.new_branches, section.branches.begin(), section.branches.end());
    arriving_ = section.functions;
    if (!instances_) {
        for (trace_function& function : arriving_) {
            const std::string own = std::move(function.name);
            function.is_template = find_shared_name(own, &function.name);
        }
    }
    collect_in_order(&file.functions, &file.new_functions, arriving_.begin(), arriving_.end());
}

/// Tells the lines what became of their branches. Exception paths that were not taken make no line partly
/// covered.
static void add_branches(traced_file* file) {
    merge_in_order(&file->branches, &file->new_branches);
    for (const trace_branch& branch : file->branches)
        file->new_lines.push_back({branch.line, false, branch.taken, !branch.taken && !branch.exception, 0});
    file->branches = {};
}

static void tell_templates_apart(std::vector<trace_function>* functions) {
    std::vector<named_place> places;
    for (trace_function& function : *functions) {
        if (function.is_template)
            places.push_back({0, {function.line, 0}, &function.name});
    }
    tell_apart(std::move(places));
}

std::map<std::string, traced_file>& trace_store::files() {
    for (auto& [name, file] : files_) {
        add_branches(&file);
        merge_in_order(&file.lines, &file.new_lines);
        merge_in_order(&file.functions, &file.new_functions);
        tell_templates_apart(&file.functions);
    }
    return files_;
}
