#include "profile_tool/block_tail.h"

#include "common/little_endian.h"
#include "common/source_position.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

constexpr std::size_t kPositionSize = 8;

static source_position position_at(std::string_view positions, std::size_t block) {
    return {little_endian_at<std::uint32_t>(positions, block * kPositionSize),
            little_endian_at<std::uint32_t>(positions, block * kPositionSize + 4)};
}

/// End of the strictly ascending positions from `block` on.
static std::size_t end_of_ascent(std::string_view positions, std::size_t block) {
    const std::size_t blocks = positions.size() / kPositionSize;
    while (block + 1 < blocks && position_at(positions, block) < position_at(positions, block + 1))
        ++block;
    return std::min(block + 1, blocks);
}

/// Whether the positions from `begin` to `end` (ascending) has `wanted`.
static bool holds(std::string_view positions, std::size_t begin, std::size_t end, source_position wanted) {
    while (begin < end) {
        const std::size_t middle = begin + (end - begin) / 2;
        const source_position found = position_at(positions, middle);
        if (found == wanted)
            return true;
        (found < wanted ? begin : end) = found < wanted ? middle + 1 : middle;
    }
    return false;
}

block_parts find_block_parts(std::string_view positions) {
    const std::size_t blocks = positions.size() / kPositionSize;
    const block_parts none = {blocks, blocks, blocks, false};
    const std::size_t common = blocks == 0 ? 0 : end_of_ascent(positions, 0);
    std::size_t lines = common;
    while (lines < blocks && !holds(positions, 0, common, position_at(positions, lines)) &&
           (lines == common || position_at(positions, lines - 1) < position_at(positions, lines)))
        ++lines;
    for (std::size_t i = common; i < blocks; ++i) {
        const source_position here = position_at(positions, i);
        const bool fits =
            i < lines || ((i == lines || position_at(positions, i - 1) < here) &&
                          (holds(positions, 0, common, here) || holds(positions, common, lines, here)));
        if (!fits || !(here < position_at(positions, common - 1)))
            return none;
    }
    return {common, lines, blocks, blocks != 0};
}

bool are_of_one_function(std::string_view a, const block_parts& parts_of_a, std::string_view b) {
    if (a == b)
        return true;
    const std::size_t common = parts_of_a.common * kPositionSize;
    if (!parts_of_a.has_pattern || a.substr(0, common) != b.substr(0, common))
        return false;
    const block_parts parts_of_b = find_block_parts(b);
    return parts_of_b.has_pattern && parts_of_b.common == parts_of_a.common;
}

namespace {

/// A line behind the common blocks, as one record has it or as several do together.
struct tail_line {
    bool has_block = false;
    bool has_mark = false;
    bool executed = false;     ///< by its own block or a common one
    std::uint64_t count = 0;   ///< of the block
    std::uint64_t in_mark = 0; ///< the mark's; 0 as importers write it
};

using tail_lines = std::map<source_position, tail_line>;

} // namespace

static std::uint64_t sum_of(std::uint64_t a, std::uint64_t b) {
    return a + b < b ? UINT64_MAX : a + b;
}

/// Adds the lines of a record's tail to `*lines` as it has them.
static void add_lines(const DPI_CONTENT& content, const block_parts& parts, tail_lines* lines) {
    for (std::size_t i = parts.common; i < parts.lines; ++i) {
        tail_line& line = (*lines)[position_at(content.positions, i)];
        line.has_block = true;
        line.count = content.counters[i];
    }
    for (std::size_t i = parts.lines; i < parts.blocks; ++i) {
        tail_line& line = (*lines)[position_at(content.positions, i)];
        line.has_mark = true;
        line.in_mark = content.counters[i];
    }
}

/// Says of each line whether the record has executed it; both ascend.
static void find_executed(const DPI_CONTENT& content, const block_parts& parts, tail_lines* lines) {
    std::size_t i = 0;
    for (auto& [position, line] : *lines) {
        while (i < parts.common && position_at(content.positions, i) < position)
            ++i;
        line.executed = line.count != 0;
        if (i < parts.common && position_at(content.positions, i) == position)
            line.executed = line.executed || content.counters[i] != 0;
    }
}

/// The line of both records: marked where each that has executed it marks it.
static tail_line joined(const tail_line& a, const tail_line& b) {
    tail_line both = {a.has_block || b.has_block, false, a.executed || b.executed, sum_of(a.count, b.count),
                      0};
    both.has_mark = (a.has_mark || b.has_mark) && (a.has_mark || !a.executed) && (b.has_mark || !b.executed);
    if (both.has_mark)
        both.in_mark = sum_of(a.in_mark, b.in_mark);
    return both;
}

/// Puts blocks in place of those behind the common ones.
static void replace_tail(DPI_CONTENT* content, const block_parts& parts, const tail_lines& lines) {
    std::vector<std::uint64_t> counters(content->counters.begin() + static_cast<std::ptrdiff_t>(parts.blocks),
                                        content->counters.end());
    content->counters.resize(parts.common);
    content->positions.resize(parts.common * kPositionSize);
    const auto add = [content](source_position position, std::uint64_t count) {
        char stored[kPositionSize];
        store_number(stored, position.line, 4);
        store_number(stored + 4, position.column, 4);
        content->positions.append(stored, sizeof stored);
        content->counters.push_back(count);
    };
    for (const auto& [position, line] : lines)
        if (line.has_block)
            add(position, line.count);
    for (const auto& [position, line] : lines)
        if (line.has_mark)
            add(position, line.in_mark);
    content->counters.insert(content->counters.end(), counters.begin(), counters.end());
}

/// Gives `*sum` the tail of both.
static void join_tails(DPI_CONTENT* sum, const DPI_CONTENT& other, const block_parts& parts_of_other) {
    const block_parts parts = find_block_parts(sum->positions);
    tail_lines lines;
    tail_lines others;
    add_lines(*sum, parts, &lines);
    add_lines(other, parts_of_other, &others);
    for (const auto& line : lines)
        others.try_emplace(line.first);
    for (const auto& line : others)
        lines.try_emplace(line.first);
    find_executed(*sum, parts, &lines);
    find_executed(other, parts_of_other, &others);
    auto theirs = others.begin();
    for (auto& line : lines)
        line.second = joined(line.second, (theirs++)->second);
    replace_tail(sum, parts, lines);
}

void add_counters(DPI_CONTENT* sum, const DPI_CONTENT& other) {
    const bool same_places = sum->positions == other.positions;
    block_parts parts = {other.block_count(), other.block_count(), other.block_count(), false};
    if (!same_places) {
        parts = find_block_parts(other.positions);
        join_tails(sum, other, parts);
    }
    for (std::size_t i = 0; i < parts.common; ++i)
        sum->counters[i] = sum_of(sum->counters[i], other.counters[i]);
    const std::size_t blocks = sum->block_count();
    for (std::size_t i = 0; i < other.counters.size() - parts.blocks; ++i)
        sum->counters[blocks + i] = sum_of(sum->counters[blocks + i], other.counters[parts.blocks + i]);
}
