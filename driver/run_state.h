// What a run holds open, set by main and read by the other phases.
#pragma once

#include <cstdio>

struct block_sink;
struct COMP;
struct DPI_FILE;
class parser;

extern DPI_FILE* pgofDPIFile;           ///< the dynamic profile; null once marking had to close it
extern DPI_FILE* pgofRefDPIFile;        ///< the reference profile, in differential mode
extern COMP* componentList;             ///< head of the module list, which belongs to the run
extern int numComponents;               ///< its length
extern parser* pars;                    ///< markers of the source file being processed; null between files
extern std::FILE* outtxt;               ///< text block export, or null
extern std::FILE* outxml;               ///< XML block export, or null
extern const block_sink* block_exports; ///< what writes the block exports; null when none was asked for
