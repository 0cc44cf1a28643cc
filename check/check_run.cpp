#include "check/check_run.h"

#include "changes/diff_input.h"
#include "check/baseline.h"
#include "check/check_options.h"
#include "check/check_result.h"
#include "check/outputs.h"
#include "common/fatal.h"
#include "common/message.h"

#include <algorithm>
#include <utility>

/// Every file with the figures that the report has of it.
static std::vector<checked_file> read_files(const check_options& options,
                                            std::optional<change_tracker>* changes, std::size_t* missing) {
    std::vector<checked_file> files;
    coverage_walk walk(options);
    const coverage_totals totals = walk.run_any([&](const file_coverage& file) {
        files.push_back({file.name, file.figures});
        if (*changes)
            (*changes)->take(file, walk.names());
    });
    *missing = totals.missing.size();
    return files;
}

/// A pattern that fits nothing would hold whatever happens.
static void check_patterns(const check_options& options, const std::vector<checked_file>& files) {
    for (const coverage_floor& floor : options.floors) {
        const bool fits = std::any_of(files.begin(), files.end(), [&floor](const checked_file& file) {
            return is_about(floor, file.name);
        });
        if (!fits)
            end_with_error("no source file fits the pattern %s; names are relative to -root",
                           printable(floor.pattern).c_str());
    }
}

/// The changed files with the figures of their changed lines.
static std::vector<checked_file> changed_files(const changed_coverage& changed) {
    std::vector<checked_file> files;
    for (const changed_file_coverage& file : changed.files) {
        coverage_figures figures;
        figures.lines = file.lines;
        figures.blocks = file.blocks;
        files.push_back({file.source, figures});
    }
    return files;
}

static baseline_result check_baseline(const check_options& options, const baseline& before,
                                      const std::vector<checked_file>& files) {
    if (before.differential != options.with_reference)
        end_with_error("%s was made %s -ref, unlike these figures; make it like them",
                       printable(*options.baseline).c_str(), before.differential ? "with" : "without");
    return compare_with(before, files, *options.baseline, options.tolerance.value_or(percentage()));
}

static check_result check_all(const check_options& options) {
    check_result result;
    result.differential = options.with_reference;
    result.most_uncovered = options.most_uncovered;
    std::optional<change_tracker> changes;
    if (options.diff)
        changes.emplace(read_diff(*options.diff, options.strip), !options.root.empty());
    std::optional<baseline> before;
    if (options.baseline)
        before = read_baseline(*options.baseline);
    std::vector<checked_file> files = read_files(options, &changes, &result.missing);
    check_patterns(options, files);
    if (before)
        result.baseline = check_baseline(options, *before, files);
    if (changes) {
        result.changed = changes->finish();
        files = changed_files(*result.changed);
    }
    for (const checked_file& file : files)
        result.figures.add(file.figures);
    for (const coverage_floor& floor : options.floors)
        result.floors.push_back(check_floor(floor, files));
    return result;
}

void run_check(int argc, char** argv) {
    check_options options;
    read_check_options(argc, argv, &options);
    options.also_whole = options.diff.has_value();
    const check_result result = check_all(options);
    write_result(options.format, result);
    if (!all_held(verdicts_of(result)))
        pgt_Exit(kFloorNotHeld);
}
