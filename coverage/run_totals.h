// Totals of the whole run, added up by markBlocks file by file and shown on the summary page.
#pragma once

#include <cstdint>

extern std::int64_t totalNumberOfFiles;         ///< source files marked
extern std::int64_t totalNumberOfFilesCovered;  ///< of those, files that count as covered
extern std::int64_t totalNumberOfProcs;         ///< functions counted
extern std::int64_t totalNumberOfProcsCovered;  ///< of those, covered functions
extern std::int64_t totalNumberOfBlocks;        ///< feasible blocks
extern std::int64_t totalNumberOfBlocksCovered; ///< of those, executed blocks

extern double functionCoverage; ///< function coverage of the current file in percent
extern double blockCoverage;    ///< block coverage of the current file in percent
