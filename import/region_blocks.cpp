#include "import/region_blocks.h"

#include "common/code_lexer.h"

#include <algorithm>
#include <cstddef>

std::vector<PGOPTI_BLOCK> stored_blocks(const std::vector<profile_block>& blocks) {
    std::vector<PGOPTI_BLOCK> result;
    result.reserve(blocks.size());
    for (const profile_block& block : blocks)
        result.push_back({{block.position.line, block.position.column}, block.count});
    return result;
}

source_position first_code_inside(const source_extent& function, code_cursor* cursor) {
    const std::optional<source_position> code =
        cursor->next_code({function.start.line, function.start.column + 1});
    return code && *code < function.end ? *code : function.start;
}

void block_builder::split_by_kind(const std::vector<source_region>& regions) {
    code_.clear();
    gaps_.clear();
    skipped_.clear();
    for (const source_region& region : regions) {
        switch (region.kind()) {
        case region_kind::code:
            code_.push_back(region);
            break;
        case region_kind::gap:
            gaps_.push_back({region.start, region.end()});
            break;
        case region_kind::skipped:
            if (skipped_.empty() || skipped_.back().end <= region.start)
                skipped_.push_back({region.start, region.end()});
            break;
        }
    }
}

/// The word at `place`; empty where there is none.
static std::string_view word_at(const source_text& source, source_position place) {
    const std::optional<std::size_t> offset = source.offset_of(place);
    if (!offset)
        return {};
    const std::string_view text = source.text();
    std::size_t end = *offset;
    while (end < text.size() && is_word_character(text[end]))
        ++end;
    return text.substr(*offset, end - *offset);
}

/// Where the statement behind a gap begins: at an "else" in the gap, as this word leads to nothing else.
source_position block_builder::first_word(const source_extent& gap, code_cursor* cursor) const {
    // A gap behind a macro begins one character behind its name, inside of its arguments.
    for (const std::uint32_t back : {1U, 0U}) {
        if (gap.start.column <= back)
            continue;
        const source_position from = {gap.start.line, gap.start.column - back};
        const std::optional<source_position> code = cursor->next_code(from);
        if (code && gap.start <= *code && *code < gap.end && word_at(source_, *code) == "else")
            return *code;
    }
    return gap.end;
}

/// Lets the regions behind a gap begin with the first word of their statement. That may be a macro's name
/// which clang tells nothing of.
void block_builder::begin_behind_gaps() {
    if (!source_.readable())
        return;
    code_cursor cursor(source_, skipped_, end_);
    for (const source_extent& gap : gaps_) {
        const source_position word = first_word(gap, &cursor);
        source_position start = gap.end;
        auto region = std::lower_bound(
            code_.begin(), code_.end(), start,
            [](const source_region& a, const source_position& place) { return a.start < place; });
        if (region != code_.end() && region->start != start) {
            start.column += static_cast<std::uint32_t>(word_at(source_, start).size());
        }
        if (region == code_.begin() || word <= std::prev(region)->start)
            continue;
        for (; region != code_.end() && region->start == start; ++region)
            region->start = word;
    }
}

/// Walks what lies inside the function in source order and notes where each inner part ends while the region
/// around it goes on. Parts of nested functions count as inner parts.
void block_builder::find_continuations(const std::vector<nested_function>& nested) {
    continuations_.clear();
    open_ends_.clear();
    const auto close_until = [&](source_position place) {
        while (!open_ends_.empty() && open_ends_.back() <= place) {
            const source_position end = open_ends_.back();
            open_ends_.pop_back();
            if (!open_ends_.empty() && end < open_ends_.back())
                continuations_.push_back({end, open_ends_.back()});
        }
    };
    std::size_t next_nested = 0;
    const auto pass_nested_until = [&](source_position place) {
        for (; next_nested < nested.size() && nested[next_nested].extent.start < place; ++next_nested) {
            close_until(nested[next_nested].extent.start);
            open_ends_.push_back(nested[next_nested].extent.end);
        }
    };
    for (const source_region& region : code_) {
        pass_nested_until(region.start);
        close_until(region.start);
        open_ends_.push_back(region.end());
    }
    const source_position behind_all = {kLargestLine, kLargestColumn};
    pass_nested_until(behind_all);
    close_until(behind_all);
    const auto before = [](const continuation& a, const continuation& b) { return a.from < b.from; };
    if (!std::is_sorted(continuations_.begin(), continuations_.end(), before)) // regions that overlap
        std::sort(continuations_.begin(), continuations_.end(), before);
}

/// Without the source text, the code goes on right behind the inner part, unless a gap is the next thing
/// known.
std::optional<source_position> block_builder::place_without_source(const continuation& place) const {
    const auto next = std::lower_bound(
        code_.begin(), code_.end(), place.from,
        [](const source_region& region, const source_position& position) { return region.start < position; });
    const source_position until = next == code_.end() ? place.limit : std::min(next->start, place.limit);
    const auto gap = std::lower_bound(
        gaps_.begin(), gaps_.end(), place.from,
        [](const source_extent& extent, const source_position& position) { return extent.start < position; });
    if (gap != gaps_.end() && gap->start <= until)
        return std::nullopt;
    const source_position behind_brace = {place.from.line, place.from.column + 1};
    return behind_brace < place.limit ? std::optional(place.from) : std::nullopt;
}

/// Lets the regions to which the "else" at `word` leads begin there; false when there are none. Where the
/// instances of a template differ, the gap that holds the word may begin too early to be found by it.
bool block_builder::begin_at_else(source_position word, code_cursor* cursor) {
    constexpr std::string_view else_word = "else";
    if (word_at(source_, word) != else_word)
        return false;
    const std::uint32_t behind = word.column + static_cast<std::uint32_t>(else_word.size());
    const std::optional<source_position> code = cursor->next_code({word.line, behind});
    if (!code)
        return false;
    auto region = std::lower_bound(
        code_.begin(), code_.end(), *code,
        [](const source_region& a, const source_position& place) { return a.start < place; });
    const bool leads_to_code = region != code_.end() && region->start == *code;
    for (; region != code_.end() && region->start == *code; ++region)
        region->start = word;
    return leads_to_code;
}

/// A place in a gap behind the inner part is no join: it leads to code with a count of its own, such as the
/// "else" behind the first branch does. Nor is one where an inner function begins.
void block_builder::add_joins(const std::vector<nested_function>& nested) {
    code_cursor cursor(source_, skipped_, end_);
    code_cursor behind_else(source_, skipped_, end_);
    auto inner = nested.begin(); // the first that begins at the place or behind it
    auto behind = gaps_.begin(); // the first gap behind the place; both go on in ascending order
    for (const continuation& place : continuations_) {
        std::optional<source_position> join;
        if (!source_.readable())
            join = place_without_source(place);
        else
            join = cursor.next_code(place.from);
        if (!join || place.limit <= *join)
            continue;
        while (inner != nested.end() && inner->extent.start < *join)
            ++inner;
        if (inner != nested.end() && inner->extent.start == *join)
            continue;
        if (begin_at_else(*join, &behind_else))
            continue;
        while (behind != gaps_.end() && behind->start <= *join)
            ++behind;
        const bool in_gap = behind != gaps_.begin() && place.from <= std::prev(behind)->start &&
                            *join < std::prev(behind)->end;
        if (!in_gap)
            found_.push_back(*join);
    }
}

/// vexcov marks a function that was never called from the first column of its first line on. Where such an
/// inner function begins and ends on a line that holds code of this one, a block brings this one's colour
/// back.
void block_builder::add_returns(const std::vector<nested_function>& nested) {
    code_cursor cursor(source_, skipped_, end_);
    for (const nested_function& inner : nested) {
        const std::uint32_t line = inner.extent.start.line;
        if (inner.first_line != line || inner.extent.end.line != line)
            continue;
        const std::optional<source_position> code = cursor.next_code({line, 1});
        if (code && *code < inner.extent.start && code_.front().start < *code)
            found_.push_back(*code);
    }
}

/// Joins the starts of the code and what was found beside, both of which are nearly always in order.
void block_builder::merge_positions() {
    if (!std::is_sorted(found_.begin(), found_.end()))
        std::sort(found_.begin(), found_.end());
    positions_.clear();
    const auto add = [this](source_position position) {
        if (positions_.empty() || positions_.back() != position)
            positions_.push_back(position);
    };
    auto next = found_.begin();
    for (const source_region& region : code_) {
        for (; next != found_.end() && *next < region.start; ++next)
            add(*next);
        add(region.start);
    }
    std::for_each(next, found_.end(), add);
}

/// Gives each position the count of the innermost counted region that it lies in; those in none are left out.
std::vector<profile_block> block_builder::count_positions() {
    std::vector<profile_block> blocks;
    blocks.reserve(positions_.size() + 1);
    open_.clear();
    std::size_t next = 0;
    for (const source_position& position : positions_) {
        for (; next < code_.size() && code_[next].start <= position; ++next) {
            while (!open_.empty() && open_.back()->end() <= code_[next].start)
                open_.pop_back();
            open_.push_back(&code_[next]);
        }
        while (!open_.empty() && open_.back()->end() <= position)
            open_.pop_back();
        if (!open_.empty())
            blocks.push_back({position, open_.back()->count});
    }
    return blocks;
}

std::vector<profile_block> block_builder::build(const std::vector<source_region>& regions,
                                                const source_extent& extent, source_position start,
                                                const std::vector<nested_function>& nested,
                                                const std::optional<source_position>& own_mark) {
    end_ = extent.end;
    split_by_kind(regions);
    begin_behind_gaps();
    find_continuations(nested);
    found_.clear();
    add_joins(nested);
    add_returns(nested);
    // Of the instances of a template, some may never have been called. Their mark must not hide the others.
    if (own_mark && own_mark->line > extent.start.line)
        found_.push_back(*own_mark);
    merge_positions();
    std::vector<profile_block> blocks = count_positions();
    blocks.front().position = start;
    blocks.push_back({{extent.end.line, std::max(extent.end.column, 2U) - 1}, 0});
    return blocks;
}

void count_last_block(std::vector<profile_block>* blocks, std::uint64_t entries) {
    const bool complete = std::all_of(blocks->begin(), blocks->end() - 1,
                                      [](const profile_block& block) { return block.count > 0; });
    blocks->back().count = complete ? entries : 0;
}
