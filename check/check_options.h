// Command line of vexcov-check.
#pragma once

#include "changes/unified_diff.h"
#include "check/floors.h"
#include "inputs/coverage_options.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// How the result is written.
enum class check_format { text, markdown, github, json };

struct check_options : coverage_options {
    std::vector<coverage_floor> floors;  ///< in the order in which they were given
    std::optional<std::string> baseline; ///< JSON of an older run
    std::optional<percentage> tolerance; ///< by which totals may lie below the baseline; none: by nothing
    std::optional<std::string> diff;     ///< diff whose lines alone count; "-": standard input
    std::optional<std::int64_t> most_uncovered; ///< changed lines that may be uncovered
    int strip = kDetectPrefix;                  ///< folders that the names of the diff lose
    check_format format = check_format::text;
};

/// Reads the argument vector. -help and -version print to standard output and end the run with status 0;
/// anything that cannot be understood ends it with a message and status 1, as does a command line that asks
/// for no comparison.
void read_check_options(int argc, char** argv, check_options* options);
