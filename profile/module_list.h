// The module list: one COMP for each routine of the static profile whose source file is of interest, sorted
// by source file and name, without duplicates.
#pragma once

#include "common/checked_alloc.h"

#include <cstdint>
#include <functional>

/// One routine.
struct COMP {
    COMP* next;                 ///< next record of the list, null at the end
    COMP* nextByLine;           ///< next routine of the same file by line; filled by order_func
    COMP* firstByLine;          ///< head of that chain, for whoever meets a routine first; likewise
    std::int32_t line;          ///< first source line
    std::int32_t blockCount;    ///< number of blocks
    std::int32_t isFirstOfFile; ///< 1 for the first record of each file; for walks that compare no names
    std::int32_t isAmbiguous;   ///< 1 when another routine of the file has the same line and display name
    char spiFlag;               ///< carried, for whoever writes the profile again
    const char* displayName;    ///< demangled name, or procName itself
    const char* fileName;       ///< source file; records that follow each other in the profile share it
    const char* procName;       ///< name as the compiler emitted it
};

/// The records of one list and the memory of them and their strings, that of dropped duplicates included.
struct module_list {
    COMP* head = nullptr;
    checked_arena memory;
};

/// Whether a routine's source file is of interest.
using component_filter =
    std::function<bool(const char* fileName, const char* displayName, const char* procName)>;

/// Reads the static profile into `list`, in place of what was there, and returns the head of the sorted list,
/// null when no record is kept. `*count` (may be null) receives its length. `filter` is asked once for each
/// record, before anything of it is kept; an empty one keeps all. A file that cannot be opened or is corrupt
/// ends the run with a message on standard error and exit status 1.
COMP* GetComponentList(const char* spiFileName, int* count, const component_filter& filter,
                       module_list& list);

/// Length of a list.
int getNumComponents(const COMP* head);

/// True when two records name the same source file.
bool same_file(const COMP* a, const COMP* b);
