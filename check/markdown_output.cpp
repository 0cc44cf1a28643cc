#include "check/outputs.h"
#include "exchange/safe_text.h"

#include <algorithm>
#include <cstdio>

constexpr std::size_t kMostRows = 100;   ///< of a table: GitHub cuts a summary at 1 MiB
constexpr std::size_t kMostRanges = 20;  ///< of uncovered lines in a row
constexpr std::size_t kMostWithout = 20; ///< changed files without data

static void print_line(const std::string& text) {
    std::fputs(text.c_str(), stdout);
    std::fputc('\n', stdout);
}

static void print_rest(std::size_t all, std::size_t shown, const char* what) {
    if (all > shown)
        print_line("\nand " + std::to_string(all - shown) + " more " + what);
}

static void print_verdicts(const std::vector<verdict>& verdicts) {
    if (verdicts.empty())
        return;
    print_line("\n| | floor | found | wanted |\n|---|---|---|---|");
    for (const verdict& one : verdicts)
        print_line((one.held ? "| held | " : "| **not held** | ") + markdown_text(one.subject) + " | " +
                   markdown_text(one.found) + " | " + markdown_text(one.wanted) + " |");
}

static void print_causes(const verdict& one) {
    if (one.causes.empty())
        return;
    print_line(std::string("\n") + markdown_text(one.subject) + ":\n\n| file | covered |\n|---|---|");
    for (std::size_t i = 0; i < std::min(one.causes.size(), kMostCauses); ++i)
        print_line("| " + markdown_text(one.causes[i].name) + " | " + markdown_text(one.causes[i].figure) +
                   " |");
    print_rest(one.causes.size(), kMostCauses, "files");
}

static void print_changed_files(const check_result& result) {
    const std::vector<const changed_file_coverage*> files = worst_first(*result.changed);
    if (files.empty())
        return;
    const bool differential = result.differential;
    print_line(differential ? "\n| file | changed lines | blocks | uncovered | blocks that only this run "
                              "reaches |\n|---|---|---|---|---|"
                            : "\n| file | changed lines | blocks | uncovered |\n|---|---|---|---|");
    for (std::size_t i = 0; i < std::min(files.size(), kMostRows); ++i)
        print_line("| " + markdown_text(files[i]->name) + " | " + shown_count(files[i]->lines) + " | " +
                   shown_count(files[i]->blocks) + " | " + shown_ranges(files[i]->uncovered, kMostRanges) +
                   (differential ? " | " + std::to_string(files[i]->new_blocks) + " |" : " |"));
    print_rest(files.size(), kMostRows, "changed files");
}

static void print_changes(const check_result& result) {
    const changed_coverage& changed = *result.changed;
    if (changed.empty)
        return print_line("\nThe diff is empty: no file is changed.");
    print_line("\nChanged lines: " + shown_count(result.figures.lines) +
               ", blocks: " + shown_count(result.figures.blocks));
    print_changed_files(result);
    const std::vector<std::string>& without = changed.without_data;
    if (!without.empty())
        print_line("\nWithout data:\n");
    for (std::size_t i = 0; i < std::min(without.size(), kMostWithout); ++i)
        print_line("- " + markdown_text(without[i]));
    print_rest(without.size(), kMostWithout, "files without data");
    if (!changed.is_root)
        print_line("\nThe names of the diff are taken to be relative to " + markdown_text(changed.directory));
}

void write_markdown(const check_result& result) {
    const std::vector<verdict> verdicts = verdicts_of(result);
    print_line("### Coverage: " + summary_of(verdicts));
    print_verdicts(verdicts);
    for (const verdict& one : verdicts)
        print_causes(one);
    if (result.changed)
        print_changes(result);
    if (result.missing != 0)
        print_line("\nSource files that are missing and count nowhere: " + std::to_string(result.missing));
}
