// The functions of the source file being processed, split into covered and uncovered ones.
//
// One array has a slot for every routine of the file. Covered functions fill it from the front upwards,
// uncovered ones from the back downwards. The table is built by markBlocks, read (and sorted in place) by the
// function list pages, and wiped by free_function_table when the next source file begins.
#pragma once

#include <cstdint>

struct COMP;

/// One function of the table.
struct func {
    const char* name;     ///< the routine's display name; borrowed from its COMP
    std::int32_t line;    ///< first source line
    std::int32_t blocks;  ///< feasible blocks
    std::int32_t covered; ///< of those, executed blocks
    double percent;       ///< percent(covered, blocks)
};

extern func** fileFuncs;                 ///< the slots, one for each COMP of the file; null between files
extern std::int32_t numFileFuncs;        ///< functions seen, excluded ones included; for checks of the table
extern func** fileFuncsCovered;          ///< first covered slot (the start of the array)
extern std::int32_t numFileFuncsCovered; ///< covered functions, at fileFuncsCovered[0 .. n-1]
extern func** fileFuncsUncovered;        ///< lowest uncovered slot in use
extern std::int32_t numFileFuncsUncovered; ///< uncovered functions, at fileFuncsUncovered[0 .. n-1]

/// Starts the table of the file whose first COMP is given: counts the COMPs of the run and makes the slots.
void allocFuncsTable(const COMP* first);

/// Enters a function. With `checkDuplicates`, a function with the same name and line that is there already
/// absorbs it, and an uncovered one moves to the covered half when this one is covered.
/// `newInReference` (differential mode): the reference run knows no such function.
void addFunc(const char* name, bool checkDuplicates, std::int32_t line, std::int32_t blocks,
             std::int32_t covered, bool newInReference);

/// Frees the table and sets all of it to zero.
void free_function_table();
