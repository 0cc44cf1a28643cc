#include "import/function_starts.h"

#include <algorithm>
#include <cstddef>
#include <optional>

/// The start of one function that lies behind `floor`.
static function_start start_of(const source_text& source, const source_outline& outline,
                               const source_extent& extent, source_position floor) {
    const function_start without_head = {extent.start, extent.start.line, false, false};
    if (extent.start.line == 0 || extent.start.column == 0 || extent.end < extent.start) // nowhere
        return without_head;
    const std::optional<std::size_t> place = source.offset_of(extent.start);
    const std::optional<std::size_t> end = source.offset_of(extent.end);
    const outlined_head* const head = place && end ? outline.head_of(*place, *end) : nullptr;
    if (!head)
        return without_head;
    const source_position begin = source.position_of(head->begin);
    if (begin <= floor)
        return without_head;
    // A comment in front of the brace may be a marker. It takes out the whole function where it stands on the
    // function's line, and else where the brace does.
    const bool may_mark = source.position_of(head->comment).line != begin.line;
    const std::uint32_t line =
        may_mark && head->comment != head->body ? source.position_of(head->body).line : begin.line;
    return {begin, line, true, head->starts_line};
}

std::vector<function_start> find_function_starts(const source_text& source, const source_outline& outline,
                                                 const std::vector<source_extent>& extents) {
    std::vector<function_start> starts;
    starts.reserve(extents.size());
    std::vector<std::size_t> open;   // functions around the current one, the innermost last
    source_position behind = {0, 0}; // where the last of the functions that have ended does
    for (std::size_t i = 0; i < extents.size(); ++i) {
        if (i != 0 && extents[i] == extents[i - 1]) { // another instance of a template
            starts.push_back(starts.back());
            continue;
        }
        for (; !open.empty() && extents[open.back()].end <= extents[i].start; open.pop_back())
            behind = std::max(behind, extents[open.back()].end);
        const source_position around = open.empty() ? behind : extents[open.back()].start;
        starts.push_back(start_of(source, outline, extents[i], std::max(behind, around)));
        open.push_back(i);
    }
    return starts;
}
