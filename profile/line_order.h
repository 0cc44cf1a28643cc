// The routines of one source file by line, for the file being processed.
#pragma once

#include <cstdint>
#include <vector>

struct COMP;

/// Head of the by-line chain of the source file being processed; set by order_func.
extern COMP* first_func_line;

/// Chains the routines of the run that begins with `first` by ascending line; of routines with the same line,
/// the later in the list comes first. Sets first_func_line.
void order_func(COMP* first);

/// The first lines of that chain, ascending.
std::vector<std::int32_t> chained_lines();
