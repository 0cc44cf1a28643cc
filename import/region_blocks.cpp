#include "import/region_blocks.h"

#include <algorithm>
#include <cstddef>

namespace {

/// A place where code goes on after something inside it has ended.
struct continuation {
    source_position from;  ///< end of the inner region
    source_position limit; ///< end of the region that encloses it
};

/// The function's regions by kind, and what the steps below derive from them.
struct layout {
    std::vector<source_region> code;    ///< ascending by start, the longer first
    std::vector<source_extent> gaps;    ///< ascending by start
    std::vector<source_extent> skipped; ///< ascending by start
};

} // namespace

static layout by_kind(const std::vector<source_region>& regions) {
    layout result;
    result.code.reserve(regions.size());
    for (const source_region& region : regions) {
        switch (region.kind()) {
        case region_kind::code:
            result.code.push_back(region);
            break;
        case region_kind::gap:
            result.gaps.push_back({region.start, region.end()});
            break;
        case region_kind::skipped:
            if (result.skipped.empty() || result.skipped.back().end <= region.start)
                result.skipped.push_back({region.start, region.end()});
            break;
        }
    }
    return result;
}

source_extent function_extent(const std::vector<source_region>& regions) {
    source_extent extent = {};
    bool first = true;
    for (const source_region& region : regions) {
        if (region.kind() != region_kind::code)
            continue;
        if (first)
            extent = {region.start, region.end()};
        extent.end = std::max(extent.end, region.end());
        first = false;
    }
    return extent;
}

source_position first_code_inside(const source_extent& function, code_cursor* cursor) {
    const std::optional<source_position> code =
        cursor->next_code({function.start.line, function.start.column + 1});
    return code && *code < function.end ? *code : function.start;
}

/// Walks what lies inside the function in source order and notes where each inner part ends while the region
/// around it goes on. Parts of nested functions count as inner parts.
static std::vector<continuation> find_continuations(const std::vector<source_region>& code,
                                                    const std::vector<nested_function>& nested) {
    std::vector<continuation> found;
    std::vector<source_position> open; // ends of the regions around the current place, the innermost last
    const auto close_until = [&](source_position place) {
        while (!open.empty() && open.back() <= place) {
            const source_position end = open.back();
            open.pop_back();
            if (!open.empty() && end < open.back())
                found.push_back({end, open.back()});
        }
    };
    std::size_t next_nested = 0;
    const auto pass_nested_until = [&](source_position place) {
        for (; next_nested < nested.size() && nested[next_nested].extent.start < place; ++next_nested) {
            close_until(nested[next_nested].extent.start);
            open.push_back(nested[next_nested].extent.end);
        }
    };
    for (const source_region& region : code) {
        pass_nested_until(region.start);
        close_until(region.start);
        open.push_back(region.end());
    }
    const source_position behind_all = {kLargestLine, kLargestColumn};
    pass_nested_until(behind_all);
    close_until(behind_all);
    return found;
}

/// True when `place` lies in a gap that begins at or behind `from`: it leads to code with a count of its own,
/// such as the "else" behind the first branch does.
static bool lies_in_gap(const layout& function, source_position from, source_position place) {
    const auto behind = std::upper_bound(
        function.gaps.begin(), function.gaps.end(), place,
        [](const source_position& position, const source_extent& gap) { return position < gap.start; });
    if (behind == function.gaps.begin())
        return false;
    const source_extent& gap = *std::prev(behind);
    return from <= gap.start && place < gap.end;
}

/// Without the source text, the code goes on right behind the inner part, unless a gap is the next thing
/// known.
static std::optional<source_position> place_without_source(const layout& function,
                                                           const continuation& place) {
    const auto next = std::lower_bound(
        function.code.begin(), function.code.end(), place.from,
        [](const source_region& region, const source_position& position) { return region.start < position; });
    const source_position until =
        next == function.code.end() ? place.limit : std::min(next->start, place.limit);
    const auto gap = std::lower_bound(
        function.gaps.begin(), function.gaps.end(), place.from,
        [](const source_extent& extent, const source_position& position) { return extent.start < position; });
    if (gap != function.gaps.end() && gap->start <= until)
        return std::nullopt;
    const source_position behind_brace = {place.from.line, place.from.column + 1};
    return behind_brace < place.limit ? std::optional(place.from) : std::nullopt;
}

static void add_joins(const layout& function, std::vector<continuation> places, const source_text& source,
                      std::vector<source_position>* positions) {
    std::sort(places.begin(), places.end(),
              [](const continuation& a, const continuation& b) { return a.from < b.from; });
    code_cursor cursor(source, function.skipped);
    for (const continuation& place : places) {
        std::optional<source_position> join;
        if (!source.readable())
            join = place_without_source(function, place);
        else
            join = cursor.next_code(place.from);
        if (join && *join < place.limit && !lies_in_gap(function, place.from, *join))
            positions->push_back(*join);
    }
}

/// vexcov marks a function that was never called from the first column of its first line on. Where such an
/// inner function begins and ends on a line that holds code of this one, a block brings this one's colour
/// back.
static void add_returns(const layout& function, const std::vector<nested_function>& nested,
                        const source_text& source, std::vector<source_position>* positions) {
    code_cursor cursor(source, function.skipped);
    for (const nested_function& inner : nested) {
        const std::uint32_t line = inner.extent.start.line;
        if (inner.first_line != line || inner.extent.end.line != line)
            continue;
        const std::optional<source_position> code = cursor.next_code({line, 1});
        if (code && *code < inner.extent.start && function.code.front().start < *code)
            positions->push_back(*code);
    }
}

/// Gives each position the count of the innermost counted region that it lies in; those in none are left out.
static std::vector<profile_block> count_positions(const std::vector<source_region>& code,
                                                  const std::vector<source_position>& positions) {
    std::vector<profile_block> blocks;
    blocks.reserve(positions.size() + 1);
    std::vector<const source_region*> open;
    std::size_t next = 0;
    for (const source_position& position : positions) {
        for (; next < code.size() && code[next].start <= position; ++next) {
            while (!open.empty() && open.back()->end() <= code[next].start)
                open.pop_back();
            open.push_back(&code[next]);
        }
        while (!open.empty() && open.back()->end() <= position)
            open.pop_back();
        if (!open.empty())
            blocks.push_back({position, open.back()->count});
    }
    return blocks;
}

std::vector<profile_block> build_blocks(const std::vector<source_region>& regions,
                                        const std::vector<nested_function>& nested,
                                        const std::optional<source_position>& own_mark,
                                        const source_text& source) {
    const layout function = by_kind(regions);
    const source_extent extent = function_extent(regions);
    std::vector<source_position> positions;
    positions.reserve(2 * function.code.size()); // each region may lead to a join
    for (const source_region& region : function.code)
        positions.push_back(region.start);
    add_joins(function, find_continuations(function.code, nested), source, &positions);
    add_returns(function, nested, source, &positions);
    // Of the instances of a template, some may never have been called. Their mark must not hide the others.
    if (own_mark && own_mark->line > extent.start.line)
        positions.push_back(*own_mark);
    std::sort(positions.begin(), positions.end());
    positions.erase(std::unique(positions.begin(), positions.end()), positions.end());
    std::vector<profile_block> blocks = count_positions(function.code, positions);
    blocks.push_back({{extent.end.line, std::max(extent.end.column, 2U) - 1}, 0});
    return blocks;
}

void count_last_block(std::vector<profile_block>* blocks, std::uint64_t entries) {
    const bool complete = std::all_of(blocks->begin(), blocks->end() - 1,
                                      [](const profile_block& block) { return block.count > 0; });
    blocks->back().count = complete ? entries : 0;
}
