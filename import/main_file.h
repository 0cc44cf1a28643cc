// From the regions of an exported function to those of its main file: the file that the function's text is
// in, as opposed to the files and macros that it was expanded from.
#pragma once

#include "import/clang_export.h"
#include "import/source_region.h"

#include <cstdint>
#include <string>
#include <vector>

/// The part of a function that a profile can show.
struct main_file_function {
    std::string file;                   ///< as the export names it
    std::uint64_t count;                ///< entries of the function
    std::vector<source_region> regions; ///< ascending by start; at one start the longer comes first
    source_extent extent;               ///< from the start of the first counted region to the end of the last
    std::vector<std::uint64_t> gap_ends; ///< for extract_main_file only; kept for its memory
};

/// Checks every number of `function` and extracts its main file's regions. Regions with the same extent
/// become one with the sum of their counts; empty ones are left out. A function of whose text only macro
/// expansions are known has those as its code. Returns false when no counted region is left. Numbers that no
/// compiler can have written end the run with a message; `input` names the export.
bool extract_main_file(const export_function& function, const std::string& input, main_file_function* result);
