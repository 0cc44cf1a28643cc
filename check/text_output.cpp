#include "check/outputs.h"
#include "exchange/safe_text.h"

#include <algorithm>
#include <cstdio>

constexpr std::size_t kMostFiles = 100;  ///< changed files that are shown
constexpr std::size_t kMostRanges = 50;  ///< of uncovered lines of a file
constexpr std::size_t kMostWithout = 20; ///< changed files without data

static void print_line(const std::string& text) {
    std::fputs(log_text(text).c_str(), stdout);
    std::fputc('\n', stdout);
}

/// Says how many more there are than were shown.
static void print_rest(const char* indent, std::size_t all, std::size_t shown, const char* what) {
    if (all > shown)
        print_line(indent + ("and " + std::to_string(all - shown)) + " more " + what);
}

static void print_changed_file(const changed_file_coverage& file, bool differential) {
    if (file.lines.total == 0)
        return print_line(file.name + ": no changed line holds code");
    std::string text = file.name + ": " + shown_count(file.lines) + " of the changed lines, blocks " +
                       shown_count(file.blocks);
    if (!file.uncovered.empty())
        text += "; uncovered: " + shown_ranges(file.uncovered, kMostRanges);
    if (differential)
        text += "; blocks that only this run reaches: " + std::to_string(file.new_blocks);
    if (!file.new_lines.empty())
        text += ", on " + shown_ranges(file.new_lines, kMostRanges);
    print_line(text);
}

static void print_changes(const check_result& result) {
    const changed_coverage& changed = *result.changed;
    if (changed.empty)
        return print_line("the diff is empty: no file is changed");
    const std::vector<const changed_file_coverage*> files = worst_first(changed);
    for (std::size_t i = 0; i < std::min(files.size(), kMostFiles); ++i)
        print_changed_file(*files[i], result.differential);
    print_rest("", files.size(), kMostFiles, "changed files");
    for (std::size_t i = 0; i < std::min(changed.without_data.size(), kMostWithout); ++i)
        print_line("without data: " + changed.without_data[i]);
    print_rest("", changed.without_data.size(), kMostWithout, "files without data");
    if (!changed.is_root)
        print_line("the names of the diff are taken to be relative to " + changed.directory);
    print_line("changed lines: " + shown_count(result.figures.lines) +
               ", blocks: " + shown_count(result.figures.blocks));
}

static void print_verdict(const verdict& one) {
    print_line((one.held ? "ok: " : "FAILED: ") + one.subject + ": " + one.found + ", wanted: " + one.wanted);
    for (std::size_t i = 0; i < std::min(one.causes.size(), kMostCauses); ++i)
        print_line("    " + one.causes[i].figure + "  " + one.causes[i].name);
    print_rest("    ", one.causes.size(), kMostCauses, "files");
}

void write_text(const check_result& result) {
    if (result.changed)
        print_changes(result);
    const std::vector<verdict> verdicts = verdicts_of(result);
    for (const verdict& one : verdicts)
        print_verdict(one);
    if (result.missing != 0)
        print_line("source files that are missing and count nowhere: " + std::to_string(result.missing));
    print_line("vexcov-check: " + summary_of(verdicts));
}

void write_result(check_format format, const check_result& result) {
    switch (format) {
    case check_format::text:
        return write_text(result);
    case check_format::markdown:
        return write_markdown(result);
    case check_format::github:
        return write_github(result);
    case check_format::json:
        return write_json(result);
    }
}
