// The figures of files as a table shows them: what is left of a file when it is gone.
#pragma once

#include "inputs/coverage_walk.h"

#include <string>

/// A row of a table.
struct file_row {
    std::string name;
    coverage_figures figures;
};

/// What is not covered.
inline std::int64_t uncovered(const covered_count& count) {
    return count.total - count.covered;
}

/// True when `a` is covered to a lower part than `b`; nothing counts as covered in full.
bool less_covered(const covered_count& a, const covered_count& b);
