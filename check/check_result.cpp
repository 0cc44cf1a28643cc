#include "check/check_result.h"

#include <algorithm>

/// Decimals that tell the figure from the floor.
static int decimals_for(const percentage& least) {
    return std::max(2, least.decimals());
}

static verdict verdict_of(const floor_result& result, bool changed) {
    const coverage_floor& floor = *result.floor;
    const int decimals = decimals_for(floor.least);
    verdict made = {.held = result.held,
                    .subject = std::string(changed ? "changed " : "") + floor.subject(),
                    .found = shown_count(result.count, decimals),
                    .wanted = "at least " + floor.least.text + "%",
                    .causes = {}};
    if (!result.lowest.empty())
        made.found = "lowest " + made.found + " in " + result.lowest;
    for (const file_count& file : result.below)
        made.causes.push_back({shown_count(file.count, decimals), file.name});
    return made;
}

static void add_baseline(const baseline_result& result, std::vector<verdict>* verdicts) {
    const int decimals = decimals_for(result.tolerance);
    for (const baseline_total& total : result.totals) {
        verdict made = {.held = total.held,
                        .subject = name_of(total.what),
                        .found = shown_count(total.now, decimals),
                        .wanted =
                            "at least the " + shown_count(total.before, decimals) + " of " + result.name,
                        .causes = {}};
        if (result.tolerance.units != 0)
            made.wanted += ", less " + result.tolerance.text + "%";
        for (const fallen_file& file : total.fallen)
            made.causes.push_back(
                {shown_part(file.now, decimals) + " (" + shown_part(file.before, decimals) + " before)",
                 file.name});
        verdicts->push_back(std::move(made));
    }
}

std::vector<verdict> verdicts_of(const check_result& result) {
    std::vector<verdict> verdicts;
    for (const floor_result& floor : result.floors)
        verdicts.push_back(verdict_of(floor, result.changed.has_value()));
    if (result.most_uncovered) {
        const std::int64_t found = uncovered_of(result.figures.lines);
        verdicts.push_back({.held = found <= *result.most_uncovered,
                            .subject = "uncovered changed lines",
                            .found = std::to_string(found),
                            .wanted = "at most " + std::to_string(*result.most_uncovered),
                            .causes = {}});
    }
    if (result.baseline)
        add_baseline(*result.baseline, &verdicts);
    return verdicts;
}

bool all_held(const std::vector<verdict>& verdicts) {
    return std::all_of(verdicts.begin(), verdicts.end(), [](const verdict& one) { return one.held; });
}

std::string summary_of(const std::vector<verdict>& verdicts) {
    const auto failed =
        std::count_if(verdicts.begin(), verdicts.end(), [](const verdict& one) { return !one.held; });
    if (verdicts.empty())
        return "no floor was given";
    if (verdicts.size() == 1)
        return failed == 0 ? "1 floor, held" : "1 floor, not held";
    return std::to_string(verdicts.size()) + " floors, " +
           (failed == 0 ? "all" : std::to_string(failed) + " not") + " held";
}

std::int64_t count_lines_of(const std::vector<line_range>& ranges) {
    std::int64_t lines = 0;
    for (const line_range& range : ranges)
        lines += std::int64_t{range.last} - range.first + 1;
    return lines;
}

std::string shown_ranges(const std::vector<line_range>& ranges, std::size_t most) {
    std::string text;
    std::int64_t shown = 0;
    for (std::size_t i = 0; i < std::min(ranges.size(), most); ++i) {
        text += text.empty() ? "" : ", ";
        text += std::to_string(ranges[i].first);
        if (ranges[i].last != ranges[i].first)
            text.append(1, '-').append(std::to_string(ranges[i].last));
        shown += std::int64_t{ranges[i].last} - ranges[i].first + 1;
    }
    if (ranges.size() > most)
        text += " and " + std::to_string(count_lines_of(ranges) - shown) + " more lines";
    return text;
}

std::vector<const changed_file_coverage*> worst_first(const changed_coverage& changed) {
    std::vector<const changed_file_coverage*> files;
    for (const changed_file_coverage& file : changed.files)
        files.push_back(&file);
    std::stable_sort(files.begin(), files.end(), [](const auto* a, const auto* b) {
        return uncovered_of(a->lines) > uncovered_of(b->lines);
    });
    return files;
}
