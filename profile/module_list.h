// The module list: one COMP for each routine of the static profile whose source file is of interest, sorted
// by source file and name, without duplicates.
#pragma once

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
    bool ownsFileName;          ///< the name goes away with this record; false where it is another one's
    const char* displayName;    ///< demangled name, or procName itself
    const char* fileName;       ///< source file; records that follow each other in the profile share it
    const char* procName;       ///< name as the compiler emitted it
};

/// Owner of the records of one list, their strings, and the duplicates that were dropped from it, whose file
/// names other records may share. Frees them at the end of its life.
class module_list {
  public:
    module_list() = default;
    module_list(module_list&& other) noexcept;
    module_list& operator=(module_list&& other) noexcept;
    module_list(const module_list&) = delete;
    module_list& operator=(const module_list&) = delete;
    ~module_list();

    /// First record, or null.
    COMP* head() const { return head_; }

    /// Appends a record of nothing but zeros.
    COMP* append();

    /// Last record of those appended, or null.
    COMP* tail() const { return tail_; }

    /// SortComponents for this list. Nothing can be appended afterwards.
    void sort();

  private:
    COMP* head_ = nullptr;
    COMP* tail_ = nullptr;
    COMP* dropped_ = nullptr; ///< duplicates, linked like the list
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
