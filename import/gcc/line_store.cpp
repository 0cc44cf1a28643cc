#include "import/gcc/line_store.h"

#include "demangle/shared_name.h"
#include "import/gcc/sorted_merge.h"
#include "import/place_names.h"

#include <algorithm>
#include <functional>
#include <tuple>

constexpr std::uint32_t kNone = 0xffffffff;

/// The routine that shows code outside every function, such as that of a file included in a function's body.
constexpr std::string_view kIncluded = "(included)";

std::uint32_t line_store::file_index(const std::string& name) {
    const auto [entry, added] = file_indices_.try_emplace(name, static_cast<std::uint32_t>(files_.size()));
    if (added)
        files_.push_back(name);
    return entry->second;
}

/// The function of this place; a new one without a mangled name where there is none.
std::uint32_t line_store::function_index(std::uint32_t file, std::string_view demangled,
                                         source_position start) {
    std::uint64_t hash = std::hash<std::string_view>()(demangled);
    for (const std::uint32_t part : {file, start.line, start.column})
        hash = (hash ^ part) * 0x9e3779b97f4a7c15U + (hash >> 29);
    const auto head = heads_.try_emplace(hash, kNone).first;
    for (std::uint32_t i = head->second; i != kNone; i = functions_[i].next) {
        const counted_function& function = functions_[i];
        if (function.file == file && function.extent.start == start && function.demangled == demangled)
            return i;
    }
    functions_.push_back({file, head->second, false, {}, std::string(demangled), {start, start}, 0, {}, {}});
    head->second = static_cast<std::uint32_t>(functions_.size() - 1);
    return head->second;
}

std::uint32_t line_store::add_function(const gcov_document& document, const gcov_function& function,
                                       std::uint32_t file) {
    name_ = document.view(function.name);
    const bool is_template = !instances_ && find_shared_name(document.view(function.name), &name_);
    const std::string_view known_by =
        is_template ? std::string_view(name_) : document.view(function.demangled);
    const std::uint32_t index = function_index(file, known_by, function.start);
    counted_function& stored = functions_[index];
    stored.is_template = is_template;
    if (stored.name.empty() || name_ < stored.name)
        stored.name = name_;
    stored.extent.end = std::max(stored.extent.end, function.end);
    stored.entries = add_counts(stored.entries, function.entries);
    return index;
}

static bool before(const counted_line& a, const counted_line& b) {
    return a.line < b.line;
}

static bool same_place(const counted_line& a, const counted_line& b) {
    return a.line == b.line;
}

static void add_up(counted_line* line, const counted_line& other) {
    line->complete = line->complete || other.complete;
    line->unexecuted = line->unexecuted || other.unexecuted;
    line->count = add_counts(line->count, other.count);
}

/// Gathers the file's lines by function and line.
void line_store::gather_lines(const gcov_document& document, const gcov_file& file, std::uint32_t index) {
    const std::vector<std::uint32_t>& owners = owners_.find(document, file);
    arriving_.clear();
    for (std::size_t i = 0; i < file.lines; ++i) {
        const gcov_line& line = document.lines[file.first_line + i];
        if (line.line == 0)
            continue;
        if (owners[i] == kNoFunction) {
            const std::uint32_t outside = function_index(index, kIncluded, {0, 0});
            functions_[outside].name = kIncluded;
            arriving_.push_back({outside, {}});
        } else {
            arriving_.push_back({stored_[owners[i] - file.first_function], {}});
        }
        arriving_.back().counted = {line.line, line.count != 0 && !line.unexecuted, line.unexecuted,
                                    line.count};
    }
    std::sort(arriving_.begin(), arriving_.end(), [](const arriving_line& a, const arriving_line& b) {
        return std::tie(a.function, a.counted.line) < std::tie(b.function, b.counted.line);
    });
}

void line_store::add_file(const gcov_document& document, const gcov_file& file, std::uint32_t index) {
    stored_.assign(file.functions, kNone);
    for (std::size_t i = 0; i < file.functions; ++i) {
        const gcov_function& function = document.functions[file.first_function + i];
        if (function.start.line != 0)
            stored_[i] = add_function(document, function, index);
    }
    gather_lines(document, file, index);
    for (std::size_t i = 0; i < arriving_.size();) {
        counted_function& function = functions_[arriving_[i].function];
        of_function_.clear();
        for (const std::uint32_t number = arriving_[i].function;
             i < arriving_.size() && arriving_[i].function == number; ++i)
            of_function_.push_back(arriving_[i].counted);
        collect_in_order(&function.lines, &function.more, of_function_.begin(), of_function_.end());
    }
}

std::vector<counted_function>& line_store::functions() {
    for (counted_function& function : functions_)
        merge_in_order(&function.lines, &function.more);
    return functions_;
}

static void add_up(counted_function* function, counted_function* other) {
    function->entries = add_counts(function->entries, other->entries);
    function->extent.end = std::max(function->extent.end, other->extent.end);
    for (std::vector<counted_line>* lines : {&other->lines, &other->more}) {
        collect_in_order(&function->lines, &function->more, lines->begin(), lines->end());
        lines->clear();
    }
    other->file = kNone;
}

void line_store::unite_friends() {
    std::vector<named_place> places;
    for (std::uint32_t i = 0; i < functions_.size(); ++i) {
        counted_function& function = functions_[i];
        if (!function.is_template && function.extent.start.line != 0)
            places.push_back({function.file, function.extent.start, &function.name, i});
    }
    for (namesakes& friends : find_friends(std::move(places))) {
        counted_function& first = functions_[friends.indices.front()];
        for (std::size_t i = 1; i < friends.indices.size(); ++i)
            add_up(&first, &functions_[friends.indices[i]]);
        first.is_template = true;
        first.name = std::move(friends.name);
    }
    std::erase_if(functions_, [](const counted_function& function) { return function.file == kNone; });
}

void line_store::unite_instances() {
    if (instances_)
        return;
    unite_friends();
    std::vector<named_place> places;
    for (counted_function& function : functions_) {
        if (function.is_template)
            places.push_back({function.file, function.extent.start, &function.name});
    }
    tell_apart(std::move(places));
}

void line_store::add(const gcov_document& document) {
    clamped_ += document.clamped;
    for (const gcov_file& file : document.files) {
        const std::optional<std::string>& name =
            sources_.name_of(document.view(document.directory), document.view(file.name));
        if (name && file.functions + file.lines != 0)
            add_file(document, file, file_index(*name));
    }
}
