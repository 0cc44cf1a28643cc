// Comparison with an older run, whose figures vexcov-export json has written.
#pragma once

#include "check/floors.h"

#include <string>
#include <vector>

/// The figures of an older run.
struct baseline {
    coverage_figures totals;
    covered_count files_counted; ///< number of files; zero where the JSON does not tell
    std::vector<checked_file> files;
    bool differential = false; ///< they are those of a comparison with a reference
};

/// Reads the JSON in the file `name`. A file that cannot be read or used ends the run with a message and exit
/// status 1.
baseline read_baseline(const std::string& name);

/// A file of both runs with a smaller covered part than before.
struct fallen_file {
    std::string name;
    covered_count now;
    covered_count before;
};

/// One metric.
struct baseline_total {
    metric what = metric::lines;
    covered_count now;
    covered_count before;
    bool held = true;
    std::vector<fallen_file> fallen; ///< files, by what they lack more than before, the most first
};

struct baseline_result {
    std::string name; ///< of the file
    percentage tolerance;
    std::vector<baseline_total> totals; ///< in the order of kMetrics
};

/// Compares totals. They alone decide; what fell in single files is listed, as it may well have moved.
baseline_result compare_with(const baseline& before, const std::vector<checked_file>& now,
                             const std::string& name, const percentage& tolerance);
