// The store that joins block data with source positions.
//
// It has two halves: the position table of the source file being processed (filled by markBlocks, read by the
// listing, emptied by vPrepareForNewSrcFile), and the list of every source file met in the run with its
// figures, from which the index pages are made. There is one instance, g_cl. Messages go to standard output.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

/// Count of a function's entry for which the dynamic profile has no data at all.
constexpr std::uint64_t NEVER_ENTERED = ~std::uint64_t{0};

/// One source position at which at least one block starts.
struct block_list_node {
    std::uint32_t line;          ///< 1-based
    std::uint32_t column;        ///< 1-based, in bytes
    std::uint64_t count;         ///< sum of the blocks' execution counts, or NEVER_ENTERED
    std::uint32_t numBlocks;     ///< blocks recorded here
    std::uint32_t numExecuted;   ///< of those, with a count other than 0
    std::uint32_t numUnexecuted; ///< of those, with a count of 0
    bool bAdjusted;              ///< a function's closing adjustment lies here
    bool bNotInRef;              ///< some block here belongs to a function that the reference run lacks
};

/// Bits of filename_list_node::flags.
enum : std::uint32_t {
    FILE_EXISTS = 1,    ///< the source file could be opened when its entry was made
    FILE_UNCOVERED = 2, ///< goes to the index of uncovered files
    FILE_COVERED = 4    ///< goes to the index of covered files
};

/// One source file of the run.
struct filename_list_node {
    filename_list_node* next;       ///< in order of first appearance
    char* name;                     ///< the path as the static profile gives it; owned
    std::uint32_t numFuncs;         ///< functions counted for coverage
    std::uint32_t numFuncsCovered;  ///< of those, covered
    std::uint32_t numBlocks;        ///< blocks counted for coverage
    std::uint32_t numBlocksCovered; ///< of those, covered
    std::uint32_t flags;            ///< FILE_ bits
    double funcCoverage;            ///< numFuncsCovered of numFuncs in percent
    double blockCoverage;           ///< numBlocksCovered of numBlocks in percent
};

/// The position table of one source file. Positions are found through a hash table, so that neither many
/// blocks on a line nor their order matters.
class file_list_node {
  public:
    /// Counts the lines of `filename`. When the file is not found: with `pNotFound`, sets it to 1, prints a
    /// warning and leaves an empty table; without, ends the run with exit status 1.
    file_list_node(const char* filename, int* pNotFound);

    const char* lpszGetFilename() const { return filename_.c_str(); }

    /// See coverage_list.
    bool bAddBlockCount(unsigned int line, unsigned int column, std::uint64_t count, bool bNotInRef,
                        unsigned int** ppUnexecuted);
    bool bAdjustLastBlock(unsigned int line, unsigned int column);
    bool bFetchHitCount(unsigned int line, unsigned int column, std::uint64_t* pCount,
                        const block_list_node** ppNode, bool* pbNotInRef, unsigned int* pNumBlocks,
                        unsigned int* pNumExecuted, bool* pbAdjusted) const;

    /// All positions, ordered by line and column.
    const std::vector<block_list_node>& sorted_positions();

  private:
    block_list_node* find_or_create(unsigned int line, unsigned int column);
    const block_list_node* find(unsigned int line, unsigned int column) const;
    std::size_t slot_of(unsigned int line, unsigned int column) const;
    void rehash(std::size_t slotCount);

    std::string filename_;
    std::uint32_t lineCount_ = 0;        ///< lines of the file plus one; 0 when the file was not found
    std::vector<block_list_node> nodes_; ///< in order of creation or, when sorted_, of position
    std::vector<std::uint32_t> slots_;   ///< hash table: index in nodes_ plus one, 0 if free; not if sorted_
    bool sorted_ = false;
};

/// The store; see the head of this file. Results written as bool are false on failure.
class coverage_list {
  public:
    coverage_list() = default;
    ~coverage_list() { delete current_; }
    coverage_list(const coverage_list&) = delete;
    coverage_list& operator=(const coverage_list&) = delete;

    /// Appends an entry for a source file unless it has one.
    bool bAddFilename(const char* name);

    /// Makes sure that the current source file has a position table; false when the file is not found.
    bool bSetName(const char* name);

    /// Records one block at a position; a line beyond the end of the file means line 1, column 1. When
    /// `ppUnexecuted` is given and some block at the position was executed, it receives the address of the
    /// position's number of unexecuted blocks, valid until the next recording call; else null.
    bool bAddBlockCount(const char* name, unsigned int line, unsigned int column, std::uint64_t count,
                        bool bNotInRef, unsigned int** ppUnexecuted);

    /// Records a function's closing adjustment: one more block, executed once, and none unexecuted.
    bool bAdjustLastBlock(const char* name, unsigned int line, unsigned int column);

    /// Looks a position up. All out pointers but `pCount` may be null. On false, `*pCount` and `*pbNotInRef`
    /// are 0; the other values may be untouched.
    bool bFetchHitCount(unsigned int line, unsigned int column, std::uint64_t* pCount, bool* pbNotInRef,
                        unsigned int* pNumBlocks, unsigned int* pNumExecuted, bool* pbAdjusted) const;

    /// Path of the current source file, or null between files.
    const char* lpszGetSrcFilename() const { return current_ ? current_->lpszGetFilename() : nullptr; }

    /// All positions of the current source file by line and column; empty between files.
    const std::vector<block_list_node>& sorted_positions();

    /// Ends the current source file: frees its positions and its function table.
    void vPrepareForNewSrcFile();

    /// Collects the entries of covered and of uncovered files in order of appearance. Each array is owned by
    /// the caller (release with free()), null when empty. Returns a negative number on failure.
    int uiGetFilenames(int* pNumCovered, filename_list_node*** pCovered, int* pNumUncovered,
                       filename_list_node*** pUncovered) const;

    /// The entry made last, which receives the figures of the file being marked; null before the first.
    filename_list_node* file_list_tail() const { return fileListTail_; }

  private:
    file_list_node* current_ = nullptr;          ///< positions of the current file; null between files
    filename_list_node* fileListHead_ = nullptr; ///< entries live until the process ends
    filename_list_node* fileListTail_ = nullptr;
    std::unordered_map<std::string_view, filename_list_node*> filesByName_; ///< keys point into the entries
};

/// Collects the entries from `head` on with any bit of `flag`; see coverage_list::uiGetFilenames.
int uiGetFilenamesForFlag(filename_list_node* head, std::uint32_t flag, int* pNum,
                          filename_list_node*** pArray);

extern coverage_list* const g_cl; ///< the single store, alive for the whole process
