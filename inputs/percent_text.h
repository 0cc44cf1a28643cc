// Percentages of the companions: cut off behind two decimals, never rounded up, so that 100 means all.
#pragma once

#include "inputs/coverage_walk.h"

#include <string>

/// What is covered in ten-thousandths of the total, cut off; 0 when there is nothing.
std::int64_t ten_thousandths(const covered_count& count);

/// "87.41"
std::string percent_text(const covered_count& count);
