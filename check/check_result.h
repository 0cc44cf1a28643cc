// What vexcov-check found: everything that its output is written from.
#pragma once

#include "changes/changed_coverage.h"
#include "check/baseline.h"
#include "check/floors.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

struct check_result {
    std::vector<floor_result> floors;
    std::optional<baseline_result> baseline;
    std::optional<changed_coverage> changed;
    coverage_figures figures;                   ///< of all files or, with a diff, of the changed lines
    std::optional<std::int64_t> most_uncovered; ///< changed lines that may be uncovered
    bool differential = false;                  ///< compared with a reference
    std::size_t missing = 0;                    ///< source files that are not there and count nowhere
};

/// One comparison in words, the same in every output for people.
struct verdict {
    struct cause {
        std::string figure; ///< "70.00% (70 of 100)"
        std::string name;   ///< of a file
    };

    bool held;
    std::string subject;       ///< "lines of src/net/*"
    std::string found;         ///< "91.20% (456 of 500)"
    std::string wanted;        ///< "at least 95%"
    std::vector<cause> causes; ///< files, the worst first
};

/// Files that are shown of a verdict; how many more there are is said.
constexpr std::size_t kMostCauses = 10;

/// All comparisons, in the order of the output.
std::vector<verdict> verdicts_of(const check_result& result);

/// "3 floors, all held", "3 floors, 2 not held".
std::string summary_of(const std::vector<verdict>& verdicts);

/// Whether everything that was asked for is held.
bool all_held(const std::vector<verdict>& verdicts);

/// "41-43, 57"; after `most` ranges how many more lines there are.
std::string shown_ranges(const std::vector<line_range>& ranges, std::size_t most);

/// Lines in ranges.
std::int64_t count_lines_of(const std::vector<line_range>& ranges);

/// The changed files, those with the most uncovered lines first.
std::vector<const changed_file_coverage*> worst_first(const changed_coverage& changed);
