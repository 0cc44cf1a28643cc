// What one source file came to: the result of the analysis, as a value.
//
// analyse_file fills it from its arguments alone; nothing below it reads or writes a process-wide record.
// Everything that shows coverage is a writer of it: the report through the records of coverage/, every other
// one by walking its lines (line_walk.h).
#pragma once

#include "analysis/block_sink.h"
#include "analysis/position_table.h"
#include "common/source_position.h"
#include "markers/line_set.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

struct COMP;
struct DPI_FILE;

/// One function of the file that counts: neither excluded nor on a disabled line.
struct source_function {
    const char* name;          ///< as the profiles store it; borrowed from its COMP, as the next
    const char* shown_name;    ///< demangled
    std::int32_t line;         ///< first source line
    bool called;               ///< the dynamic profile has a record of it
    bool new_in_reference;     ///< differential mode: it is called, and the reference has no record of it
    bool ambiguous;            ///< another function of the file has the same line and shown name
    std::int64_t blocks;       ///< feasible blocks, extra ones included
    std::int64_t covered;      ///< of those, covered ones
    std::int64_t extra;        ///< blocks of the record beyond the static count
    std::uint64_t entry_count; ///< sum of the record's entry counts; 0 when it was not called
    source_position first;     ///< lowest and highest position of its blocks; only when it was called
    source_position last;
};

/// How a file counts in the indexes and totals.
enum class file_status {
    none,      ///< differential mode: nothing in it is new
    uncovered, ///< no function was called; differential mode: every function is new
    covered
};

/// Figures of the file.
struct source_figures {
    std::int64_t functions = 0;
    std::int64_t functions_found = 0;    ///< with a record in the profile
    std::int64_t functions_new = 0;      ///< differential mode: without one in the reference
    std::int64_t functions_with_new = 0; ///< differential mode: with new coverage
    std::int64_t functions_covered = 0;  ///< those found or, in differential mode, those with new coverage
    std::int64_t functions_excluded = 0; ///< in no other figure
    std::int64_t blocks = 0;
    std::int64_t blocks_covered = 0;
    file_status status = file_status::none;
};

struct source_analysis {
    std::string path;           ///< as the static profile gives it
    std::string_view text;      ///< borrowed: valid as long as the loader keeps the file
    bool differential = false;  ///< there was a reference: the counts are what is new
    bool no_partial = false;    ///< partly covered code counts as covered
    bool complete = true;       ///< false when it was given up for lack of memory; figures are not right then
    bool out_of_memory = false; ///< some of it is missing for lack of memory
    line_set disabled;          ///< lines that markers take out
    position_table positions;   ///< in order
    std::vector<source_function> functions; ///< in the order of the static profile's list
    source_figures figures;
};

/// A profile and the name that messages give it.
struct named_profile {
    DPI_FILE* file;
    const char* name;
};

/// What a source file is analysed from.
struct analysis_inputs {
    named_profile profile;
    named_profile reference;  ///< file is null: no differential mode
    const COMP* routines;     ///< the file's routines: this one and those of the same file that follow it
    std::string_view text;    ///< of the source file
    std::uint32_t lines;      ///< count_lines of it, plus one
    const line_set& disabled; ///< lines that markers take out
};

/// How counters are read.
enum class count_precision {
    single, ///< as vexcov's report shows them
    exact
};

struct analysis_options {
    bool no_partial = false; ///< partly covered code counts as covered
    count_precision counts = count_precision::single;
};

/// Joins every routine of the file with its counters. The blocks of each function go to `sink`, unless it is
/// null; the file's beginning and end are told to it by the caller. Warnings go to the standard streams. What
/// is wrong with a profile ends the run (dpi_file.h).
source_analysis analyse_file(const analysis_inputs& inputs, const analysis_options& options,
                             const block_sink* sink);
