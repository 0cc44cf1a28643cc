#include "check/outputs.h"
#include "exchange/annotation.h"

#include <algorithm>
#include <cstdio>

namespace {

struct uncovered_range {
    const std::string* file;
    line_range lines;
};

} // namespace

static void print(const std::string& annotation) {
    std::fputs(annotation.c_str(), stdout);
}

static void print_errors(const std::vector<verdict>& verdicts) {
    std::size_t failed = 0;
    for (const verdict& one : verdicts)
        if (!one.held && ++failed <= kMostAnnotations)
            print(annotation("error", "Coverage is too low",
                             one.subject + ": " + one.found + ", wanted: " + one.wanted));
    if (failed > kMostAnnotations)
        print(
            annotation("notice", "Coverage",
                       std::to_string(failed - kMostAnnotations) + " more floors are not held; see the log"));
}

/// Ranges of uncovered lines, the longest first.
static std::vector<uncovered_range> ranges_of(const changed_coverage& changed) {
    std::vector<uncovered_range> ranges;
    for (const changed_file_coverage& file : changed.files)
        for (const line_range& lines : file.uncovered)
            ranges.push_back({&file.name, lines});
    std::stable_sort(ranges.begin(), ranges.end(), [](const uncovered_range& a, const uncovered_range& b) {
        return a.lines.last - a.lines.first > b.lines.last - b.lines.first;
    });
    return ranges;
}

static void print_warning_at(const std::string& file, const line_range& lines) {
    print(annotation_at(file, lines, "warning", "Not covered",
                        (lines.first == lines.last ? "No test reaches line " : "No test reaches lines ") +
                            shown_ranges({lines}, 1)));
}

static void print_warnings(const changed_coverage& changed) {
    const std::vector<uncovered_range> ranges = ranges_of(changed);
    std::int64_t left_out = 0;
    for (std::size_t i = 0; i < ranges.size(); ++i) {
        const line_range& lines = ranges[i].lines;
        if (i >= kMostAnnotations)
            left_out += count_lines_of({lines});
        else
            print_warning_at(*ranges[i].file, lines);
    }
    if (left_out != 0)
        print(annotation("notice", "Not covered",
                         std::to_string(left_out) + " more uncovered changed lines; see the log"));
}

void write_github(const check_result& result) {
    write_text(result);
    print_errors(verdicts_of(result));
    if (result.changed)
        print_warnings(*result.changed);
}
