// The module list: one COMP for each routine of the static profile whose source file is of interest, sorted
// by source file and name, without duplicates. It lives until the process ends.
#pragma once

#include <cstdint>
#include <vector>

/// One routine.
struct COMP {
    COMP* next;                 ///< next record of the list, null at the end
    COMP* nextByLine;           ///< next routine of the same file by line; filled by order_func
    COMP* firstByLine;          ///< head of that chain; filled by order_func
    std::int32_t line;          ///< first source line
    std::int32_t blockCount;    ///< number of blocks
    std::int32_t isFirstOfFile; ///< 1 for the first record of each run with the same file name
    std::int32_t isAmbiguous;   ///< 1 when another routine of the file has the same line and display name
    char spiFlag;               ///< kept, not interpreted
    const char* displayName;    ///< demangled name, or procName itself
    const char* fileName;       ///< source file; records that follow each other may share it
    const char* procName;       ///< name as the compiler emitted it
};

/// Head of the by-line chain of the source file being processed; set by order_func.
extern COMP* first_func_line;

/// The routines of that chain in its order, for binary search; set by order_func.
extern std::vector<COMP*> funcs_by_line;

/// Reads the static profile and returns the head of the sorted list, null when no record is kept. `*count`
/// (may be null) receives its length. A file that cannot be opened or is corrupt ends the run with a message
/// on standard error and exit status 1.
COMP* GetComponentList(const char* spiFileName, int* count);

/// Length of a list.
int getNumComponents(const COMP* head);

/// Sorts a list, then removes exact duplicates and sets isFirstOfFile and isAmbiguous. Returns the new head.
COMP* SortComponents(COMP* head);

/// By fileName, displayName, procName as unsigned bytes: negative, 0 or positive.
int compareComponets(const COMP* a, const COMP* b);

/// The second half of SortComponents, over a sorted list.
void eiliminateRedundantComponents(COMP* head);

/// Chains the routines of the run that begins with `first` by ascending line; of routines with the same line,
/// the later in the list comes first. Sets first_func_line and funcs_by_line.
void order_func(COMP* first);

/// True when two records name the same source file.
bool same_file(const COMP* a, const COMP* b);
