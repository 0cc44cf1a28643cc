#include "import/gcc/line_owners.h"

#include <algorithm>
#include <numeric>

void line_owners::order_functions(const gcov_document& document, const gcov_file& file) {
    functions_.clear();
    by_name_.clear();
    for (std::size_t i = file.first_function; i < file.first_function + file.functions; ++i) {
        const gcov_function& function = document.functions[i];
        if (function.start.line == 0)
            continue;
        functions_.push_back(static_cast<std::uint32_t>(i));
        by_name_.emplace(document.view(function.name), static_cast<std::uint32_t>(i));
    }
    std::sort(functions_.begin(), functions_.end(), [&](std::uint32_t a, std::uint32_t b) {
        const gcov_function& x = document.functions[a];
        const gcov_function& y = document.functions[b];
        return x.start != y.start ? x.start < y.start : x.end != y.end ? x.end > y.end : a < b;
    });
}

void line_owners::order_lines(const gcov_document& document, const gcov_file& file) {
    lines_.resize(file.lines);
    std::iota(lines_.begin(), lines_.end(), static_cast<std::uint32_t>(file.first_line));
    std::sort(lines_.begin(), lines_.end(), [&](std::uint32_t a, std::uint32_t b) {
        return document.lines[a].line < document.lines[b].line;
    });
}

void line_owners::open(const gcov_document& document, std::uint32_t index) {
    const gcov_function& function = document.functions[index];
    while (!open_.empty() && open_.back().end < function.start)
        open_.pop_back();
    open_function opened = {index, index, function.end};
    if (!open_.empty())
        opened.end = std::min(opened.end, open_.back().end);
    if (function.entries == 0)
        opened.executed = open_.empty() ? kNoFunction : open_.back().executed;
    open_.push_back(opened);
}

std::uint32_t line_owners::owner(const gcov_document& document, const gcov_line& line) const {
    const auto named = by_name_.find(document.view(line.function));
    if (named != by_name_.end()) {
        const gcov_function& function = document.functions[named->second];
        if (function.start.line <= line.line && line.line <= function.end.line &&
            (line.count == 0 || function.entries != 0))
            return named->second;
    }
    if (open_.empty())
        return kNoFunction;
    return line.count == 0 ? open_.back().index : open_.back().executed;
}

const std::vector<std::uint32_t>& line_owners::find(const gcov_document& document, const gcov_file& file) {
    order_functions(document, file);
    order_lines(document, file);
    owners_.resize(file.lines);
    open_.clear();
    auto next = functions_.begin();
    for (const std::uint32_t index : lines_) {
        const gcov_line& line = document.lines[index];
        for (; next != functions_.end() && document.functions[*next].start.line <= line.line; ++next)
            open(document, *next);
        while (!open_.empty() && open_.back().end.line < line.line)
            open_.pop_back();
        owners_[index - file.first_line] = owner(document, line);
    }
    return owners_;
}
