#include "bench/tree_function.h"

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <iterator>

/// One statement of the made-up code. A '@' (not written) stands before each place where a block may start.
static const char* const STATEMENTS[] = {
    "@if (r->count > %u && @r->next != NULL)",
    "    @r->total += scale_of(r, %u);",
    "@for (i = %u; i < r->count && @r->items[i] != 0; i++)",
    "    @sum += r->items[i] * weight[i & 7]; /* step %u */",
    "@value = lookup(r->table, key, %u) ? @r->first : r->last;",
    "@while (*text != '\\0' && @*text <= '%u')",
    "    @text += step(text, limit - %u);",
    "@return report(\"item %u of %d\\n\", i) < 0 ? @-1 : sum;",
};

/// Appends a line of code in which up to `wanted` blocks start; returns their columns. Where a statement has
/// fewer places or is too short, further terms follow.
static std::vector<std::uint32_t> append_code_line(std::string& text, const tree_sizes& sizes,
                                                   std::uint64_t wanted, sequence& numbers) {
    std::vector<std::uint32_t> columns;
    const std::size_t start = text.size();
    const auto here = [&] { return static_cast<std::uint32_t>(text.size() - start + 1); };
    text += "    ";
    for (const char* p = STATEMENTS[numbers.below(std::size(STATEMENTS))]; *p != '\0'; p++) {
        if (*p == '@') {
            if (columns.size() < wanted)
                columns.push_back(here());
        } else if (p[0] == '%' && p[1] == 'u') {
            text += std::to_string(numbers.below(100));
            p++;
        } else {
            text += *p;
        }
    }
    while (columns.size() < wanted || text.size() - start < sizes.length) {
        text += " + ";
        if (columns.size() < wanted)
            columns.push_back(here());
        text += "t[" + std::to_string(numbers.below(100)) + "]";
    }
    return columns;
}

/// The blocks of function `index` that start on body line `line`: they are spread evenly.
static std::uint64_t blocks_on_line(const tree_sizes& sizes, std::uint64_t line, std::uint64_t body) {
    return sizes.blocks * (line + 1) / body - sizes.blocks * line / body;
}

/// Marker comments at the end of a body line: `line` counts the body lines of the whole file.
static void append_markers(std::string& text, const tree_sizes& sizes, std::uint64_t line,
                           std::uint64_t all) {
    if (sizes.nested != 0) {
        const std::uint64_t half = all / 2;
        const std::uint64_t pairs = std::min(sizes.nested, half);
        if (line < pairs)
            text += " // begin-dead";
        else if (line >= all - pairs)
            text += " // end-dead";
    }
    if (sizes.flat != 0) {
        const std::uint64_t step = std::max<std::uint64_t>(all / sizes.flat, 2);
        if (line / step < sizes.flat && line % step < 2)
            text += line % step == 0 ? " // begin-dead" : " // end-dead";
    }
}

/// Unless an order is asked for, the names do not follow the lines, as in real code: a sort has something to
/// do.
static std::string function_name(const tree_sizes& sizes, std::uint64_t index) {
    const std::uint64_t names = (sizes.functions + sizes.twins - 1) / sizes.twins;
    const std::uint64_t stride = names % 7919 == 0 ? 7907 : 7919;
    std::uint64_t number = index / sizes.twins;
    if (sizes.one_name != 0)
        number = 0;
    else if (sizes.order == 0)
        number = (number * stride + 13) % names;
    else if (sizes.order == 2)
        number = names - 1 - number;
    char name[64];
    // The last number, of a local entity, is part of the name, but not of what a reader is shown.
    if (sizes.twins > 1)
        std::snprintf(name, sizeof name, "_ZZ15request_%07" PRIu64 "iE5local_%" PRIu64, number,
                      index % sizes.twins);
    else
        std::snprintf(name, sizeof name, "handle_request_%07" PRIu64, number);
    return name;
}

std::vector<std::uint64_t> block_counts(const tree_sizes& sizes, sequence& numbers) {
    std::vector<std::uint64_t> counts(sizes.blocks, 0);
    if (sizes.missed != 0 && numbers.below(sizes.missed) == 0)
        return counts;
    for (std::uint64_t& count : counts)
        count = sizes.missed != 0 && numbers.below(sizes.missed) == 0 ? 0 : 1 + numbers.below(sizes.highest);
    return counts;
}

/// Moves the blocks of a function to where they are asked for.
static void place_blocks(std::vector<position>& blocks, std::uint64_t placing) {
    constexpr std::uint32_t beyond = 100000000;
    const position first = blocks.front();
    if (placing == PLACE_REVERSED)
        std::reverse(blocks.begin(), blocks.end());
    for (std::uint32_t i = 0; i < blocks.size(); i++) {
        if (placing == PLACE_AT_ONE_POSITION)
            blocks[i] = first;
        else if (placing == PLACE_BEYOND_LINE)
            blocks[i] = {first.line, beyond + i};
        else if (placing == PLACE_BEYOND_FILE)
            blocks[i] = {beyond + i, 1};
    }
}

function_facts append_function(std::string& text, const tree_sizes& sizes, std::uint64_t index,
                               std::uint32_t first_line, sequence& numbers) {
    function_facts facts;
    facts.name = function_name(sizes, index);
    facts.line = first_line + 1;
    facts.line -=
        static_cast<std::uint32_t>((sizes.one_line != 0 ? index : index % sizes.twins) * sizes.lines);
    facts.counts = block_counts(sizes, numbers);
    text += "/* Handles one request; called by the loop that reads them. */\n";
    text += "static int handle_request_" + std::to_string(index) + "(const struct record *r, int n)\n{\n";
    const std::uint64_t body = sizes.lines - 5;
    for (std::uint64_t line = 0; line < body; line++) {
        const std::uint64_t starts = blocks_on_line(sizes, line, body);
        const auto columns = append_code_line(text, sizes, std::min(starts, sizes.positions), numbers);
        append_markers(text, sizes, index * body + line, sizes.functions * body);
        text += '\n';
        const auto number = static_cast<std::uint32_t>(first_line + 3 + line);
        for (std::uint64_t start = 0; start < starts; start++)
            facts.blocks.push_back({number, columns[std::min<std::size_t>(start, columns.size() - 1)]});
    }
    text += "}\n\n";
    facts.blocks.front() = {first_line + 2, 1};
    if (sizes.blocks > 1)
        facts.blocks.back() = {static_cast<std::uint32_t>(first_line + sizes.lines - 2), 1};
    place_blocks(facts.blocks, sizes.placing);
    return facts;
}
