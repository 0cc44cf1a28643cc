// Input: options, recorded positions and a source file. The positions are compared with a plain map, and the
// listing made of them is taken apart again.
#include "report/listing.h"

#include "analysis/line_walk.h"
#include "common/source_file.h"
#include "coverage/block_marking.h"
#include "coverage/coverage_list.h"
#include "driver/run_config.h"
#include "driver/run_state.h"
#include "fuzz/harness.h"
#include "fuzz/page_check.h"
#include "markers/parser.h"
#include "profile/module_list.h"

#include <algorithm>
#include <filesystem>
#include <map>

namespace {

/// What is recorded at a position.
struct plain_position {
    std::uint64_t count = 0;
    std::uint32_t blocks = 0;
    std::uint32_t executed = 0;
    std::uint32_t unexecuted = 0;
    bool adjusted = false;
    bool not_in_reference = false;
};

/// The positions of the file, in a plain map.
struct plain_positions {
    std::uint32_t lines; ///< of the file, plus one
    std::map<std::pair<std::uint32_t, std::uint32_t>, plain_position> at;

    plain_position& place(std::uint32_t line, std::uint32_t column) {
        return line > lines ? at[{1, 1}] : at[{line, column}];
    }
};

} // namespace

static std::uint64_t count_of(byte_script& script) {
    const unsigned int kind = script.byte();
    if (kind >= 250)
        return kind == 250   ? NEVER_ENTERED
               : kind == 251 ? NEVER_ENTERED - 1
                             : std::uint64_t{1} << (kind - 252) * 20;
    return kind < 100 ? 0 : kind - 100;
}

/// Records a block in both ways.
static void record_block(plain_positions& plain, std::uint32_t line, std::uint32_t column,
                         std::uint64_t count, bool not_in_reference) {
    plain_position& place = plain.place(line, column);
    unsigned int* unexecuted = nullptr;
    require(g_cl->bAddBlockCount("s.c", line, column, count, not_in_reference, &unexecuted),
            "a block is taken");
    if (count == NEVER_ENTERED)
        place.count = place.count == 0 ? NEVER_ENTERED : place.count;
    else
        place.count = place.count == NEVER_ENTERED ? count : place.count + count;
    place.not_in_reference = place.not_in_reference || not_in_reference;
    ++place.blocks;
    ++(count == 0 ? place.unexecuted : place.executed);
    require((unexecuted != nullptr) == (place.executed > 0), "unexecuted blocks of an executed position");
    require(!unexecuted || *unexecuted == place.unexecuted, "number of unexecuted blocks");
}

/// Records one block or adjustment in both ways.
static void record(byte_script& script, plain_positions& plain) {
    const std::uint32_t line = std::max(script.number(), 1U);
    const std::uint32_t column = std::max(script.number(), 1U);
    const unsigned int kind = script.byte();
    if (kind >= 32)
        return record_block(plain, line, column, count_of(script), kind > 200);
    plain_position& place = plain.place(line, column);
    require(g_cl->bAdjustLastBlock("s.c", line, column), "an adjustment is taken");
    ++place.count;
    ++place.blocks;
    ++place.executed;
    place.unexecuted = 0;
    place.adjusted = true;
}

static void check_positions(const plain_positions& plain) {
    for (const auto& [at, place] : plain.at) {
        std::uint64_t count = 0;
        bool not_in_reference = false;
        bool adjusted = false;
        unsigned int blocks = 0;
        unsigned int executed = 0;
        const bool found = g_cl->bFetchHitCount(at.first, at.second, &count, &not_in_reference, &blocks,
                                                &executed, &adjusted);
        require(found == (at.first < plain.lines), "a position of the text is found");
        if (found)
            require(count == place.count && blocks == place.blocks && executed == place.executed &&
                        adjusted == place.adjusted && not_in_reference == place.not_in_reference,
                    "what is recorded at a position");
    }
    std::uint64_t count = 1;
    require(!g_cl->bFetchHitCount(3, 70000, &count, nullptr, nullptr, nullptr, nullptr) ||
                plain.at.count({3, 70000}),
            "a position without a block");
    require(g_cl->current_analysis().positions.positions().size() == plain.at.size(),
            "the number of positions");
}

/// Walks the lines of the current source file, with some functions in it that were never called and one that
/// was.
static void check_lines(std::string_view source) {
    source_analysis& analysis = g_cl->current_analysis();
    for (const std::uint32_t line : {1U, 3U, analysis.positions.lines() / 2}) {
        source_function function = {};
        function.line = static_cast<std::int32_t>(line);
        function.called = line == 3;
        function.first = {line, 1};
        function.last = {line + 2, 5};
        analysis.functions.push_back(function);
    }
    std::string text;
    for (line_walk walk(analysis); walk.next();) {
        const source_line& line = walk.line();
        text.append(line.text).append(line.has_newline ? "\n" : "");
        const bool blank = line.text.find_first_not_of(" \t\r\f\v") == std::string_view::npos;
        require(!walk.holds_code() || !blank, "a blank line holds no code");
        require(walk.holds_code() || walk.count() == 0, "only code has a count");
        std::size_t offset = 0;
        for (const line_stretch& stretch : walk.stretches()) {
            require(stretch.offset >= offset && stretch.offset <= line.text.size(), "stretches are in order");
            offset = stretch.offset;
        }
    }
    require(text == source, "the lines are the text");
}

static void set_options(unsigned int choice) {
    g_bXCOUNTS = (choice & 1) != 0;
    compWithRef = (choice & 2) != 0;
    if (choice & 4)
        one_line_disable = {"O"};
}

/// A bound on the size of a listing: counts repeat the text in front of them.
static std::size_t size_bound(std::string_view source, const plain_positions& plain) {
    std::size_t longest = 0;
    for (std::string_view rest = source; !rest.empty();) {
        const std::size_t length = std::min(rest.find('\n'), rest.size() - 1) + 1;
        longest = std::max(longest, length);
        rest.remove_prefix(length);
    }
    const std::size_t lines = static_cast<std::size_t>(std::count(source.begin(), source.end(), '\n')) + 1;
    return 4096 + 4 * source.size() + 120 * lines + plain.at.size() * (longest + 300);
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const bool directory_made = std::filesystem::create_directories(scratch().path() / "CodeCoverage");
    require(directory_made, "a directory for the pages can be made");
    // The bytes of the positions come first, the source is what remains.
    byte_script input(data, size);
    const unsigned int choice = input.byte();
    byte_script script(input.take(std::size_t{input.byte()} * 4));
    const std::string_view source = input.rest();
    std::size_t newlines = static_cast<std::size_t>(std::count(source.begin(), source.end(), '\n'));
    newlines += !source.empty() && source.back() != '\n' ? 1 : 0;
    scratch().put("s.c", source);
    bool written = false;
    COMP routine = {};
    routine.fileName = "s.c";
    plain_positions plain = {static_cast<std::uint32_t>(newlines + 1), {}};
    const outcome end = run_in_scratch([&] {
        set_options(choice);
        parser markers("s.c", one_line_disable, start_disable_block, end_disable_block, {}, run_sources());
        pars = &markers;
        g_cl->bAddFilename("s.c");
        require(g_cl->bSetName("s.c"), "the source is found");
        require(g_cl->bSetName("absent") && g_cl->lpszGetSrcFilename() == std::string("s.c"),
                "one table until the next source file");
        g_cl->current_analysis().disabled = markers.all_disabled_lines();
        g_cl->current_analysis().differential = compWithRef;
        // More positions than the table has room for at first, the last one first.
        for (std::uint32_t column = (choice & 8) != 0 ? 700 : 0; column != 0; --column)
            record_block(plain, 2, column, column % 3, false);
        while (!script.empty())
            record(script, plain);
        check_positions(plain);
        written = bOutputLineCoverage("html");
        check_positions(plain);
        check_lines(source);
        require(g_cl->bAddFilename("s.c"), "a file that the list has already");
        if (choice == 255)
            file_list_node("absent", nullptr);
        if (choice == 254)
            markBlocks(&routine);
    });
    require(written && end.ended == (choice >= 254), "a listing is written; what no run does has a message");
    const std::string page = read_scratch("CodeCoverage/S_C_SRC.HTML");
    require(page.size() <= size_bound(source, plain), "the size of a listing is bounded");
    const std::size_t count_lines = check_listing(page, source);
    require(count_lines == 0 || (choice & 1) != 0, "counts only when they were asked for");
    require(source.empty() || page.ends_with("</html>\n"), "a listing is whole");
    return 0;
}
