// From the lines of a function to its basic blocks.
//
// gcov knows lines, not columns: a line with code is one block, at its first character that is not blank. The
// numbers of the blocks do not depend on counts, so that the profiles of two runs of one program can be
// compared and added up; the blocks that are there in some runs only have the last numbers: first lines that
// exceptions alone lead to, then one block with count 0 for each line that was executed in part, both
// ascending. vexcov-profile knows them by this order.
#pragma once

#include "import/function_starts.h"
#include "import/gcc/file_records.h"
#include "import/gcc/line_store.h"
#include "import/gcc/source_lines.h"
#include "import/source_outline.h"

#include <cstdint>
#include <vector>

/// What the text and the functions around it make of a function.
struct function_surroundings {
    function_start start = {};
    bool code_before = false;   ///< code of another function stands before it on its first line
    bool beside_called = false; ///< a function that was called begins or ends where this one is marked from
    std::vector<counted_line>
        shared; ///< first lines of called functions inside, with the count that is its own
};

/// The blocks of one function. `called_starts`: the lines on which functions of the file that were called
/// begin, ascending.
placed_function place_function(const counted_function& function, const function_surroundings& surroundings,
                               const std::vector<std::uint32_t>& called_starts, const source_lines& source,
                               const source_outline& outline);
