// Floors: the least that must be covered, of everything, of the files that a pattern fits, or of each file.
#pragma once

#include "check/percentage.h"
#include "inputs/coverage_walk.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

enum class metric { blocks, lines, functions };

constexpr metric kMetrics[] = {metric::blocks, metric::lines, metric::functions};

const char* name_of(metric what);
std::optional<metric> metric_of(std::string_view name);

/// The count of one metric among all.
const covered_count& count_of(const coverage_figures& figures, metric what);
covered_count& count_of(coverage_figures& figures, metric what);

/// What -min or -min-file asks for.
struct coverage_floor {
    std::string pattern; ///< of the names of the files that count; empty: all
    metric what = metric::lines;
    percentage least;
    bool each_file = false; ///< every file must hold it, not all of them together

    /// "lines", "lines of src/net/*", "lines of each file", "lines of each file of src/net/*".
    std::string subject() const;
};

/// Reads "[PATTERN:]METRIC=PERCENT". Nothing when it cannot be understood.
std::optional<coverage_floor> read_floor(std::string_view text);

/// Whether the pattern of a floor fits a file: "*" stands for any text, "/" included, "?" for one character,
/// "[a-z]" for one of these.
bool is_about(const coverage_floor& floor, const std::string& name);

/// The figures of a file as they are compared.
struct checked_file {
    std::string name;
    coverage_figures figures;
};

/// A file and the count that matters.
struct file_count {
    std::string name;
    covered_count count;
};

/// How a floor was found.
struct floor_result {
    const coverage_floor* floor = nullptr;
    bool held = true;
    covered_count count;           ///< of all files together; of each_file: that of the lowest file
    std::string lowest;            ///< of each_file: the name of that file
    std::vector<file_count> below; ///< where it is not held: the files below the floor, the worst first
};

/// Compares `files` with a floor. Those below a common floor come by what they lack, the most first; those
/// below a floor of each file by their covered part, the lowest first.
floor_result check_floor(const coverage_floor& floor, const std::vector<checked_file>& files);
