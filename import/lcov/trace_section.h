// One section of an LCOV trace file: what a test has covered of one source file.
#pragma once

#include "import/source_region.h"

#include <cstdint>
#include <string>
#include <vector>

/// A line with code.
struct trace_line {
    std::uint32_t line = 0; ///< from 1 on
    bool counted = false;   ///< a DA record tells of it; else it has branches only
    bool taken = false;     ///< some branch on it was taken
    bool passed = false;    ///< some branch on it was not taken
    std::uint64_t count = 0;
};

/// A branch on a line. Several tests, or traces, tell of the same ones.
struct trace_branch {
    std::uint32_t line = 0;
    bool taken = false;
    bool exception = false; ///< only an exception takes it
    std::uint64_t id = 0;   ///< hash of what it is called on its line
};

struct trace_function {
    std::uint32_t line = 0; ///< on which it begins, from 1 on
    std::uint32_t end = 0;  ///< its last line; 0: not told
    std::string name;
    std::uint64_t entries = 0;
    bool is_template = false; ///< stands for all instances
};

struct trace_section {
    std::string file;              ///< source file
    std::vector<trace_line> lines; ///< without what their branches say
    std::vector<trace_branch> branches;
    std::vector<trace_function> functions;
};
