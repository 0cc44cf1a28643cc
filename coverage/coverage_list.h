// The store that joins block data with source positions.
//
// It has two halves: the position table of the source file being processed (filled by markBlocks, read by the
// listing, emptied by vPrepareForNewSrcFile), which is part of that file's analysis, and the list of every
// source file met in the run (file_list.h). There is one instance, g_cl. Messages go to standard output.
#pragma once

#include "analysis/source_analysis.h"
#include "coverage/file_list.h"

#include <cstdint>
#include <memory>

/// The position table of one source file.
class file_list_node {
  public:
    /// Counts the lines of `filename`. When the file is not found: with `pNotFound`, sets it to 1, prints a
    /// warning and leaves an empty table; without, ends the run with exit status 1.
    file_list_node(const char* filename, int* pNotFound);

    const char* lpszGetFilename() const { return analysis_.path.c_str(); }

    /// See coverage_list. `ppNode`, for callers that want the whole position, may be null like the others.
    bool bAddBlockCount(unsigned int line, unsigned int column, std::uint64_t count, bool bNotInRef,
                        unsigned int** ppUnexecuted);
    bool bAdjustLastBlock(unsigned int line, unsigned int column);
    bool bFetchHitCount(unsigned int line, unsigned int column, std::uint64_t* pCount,
                        const block_list_node** ppNode, bool* pbNotInRef, unsigned int* pNumBlocks,
                        unsigned int* pNumExecuted, bool* pbAdjusted) const;

    /// The analysis that the table belongs to. Before the file was marked it has its text and nothing else.
    source_analysis& analysis() { return analysis_; }

  private:
    source_analysis analysis_;
};

/// The store; see the head of this file. Results written as bool are false on failure.
class coverage_list {
  public:
    /// Appends an entry for a source file unless it has one.
    bool bAddFilename(const char* name) { return files_.add(name); }

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

    /// What the current source file came to. There must be one.
    source_analysis& current_analysis() { return current_->analysis(); }

    /// Ends the current source file: frees its analysis and its function table.
    void vPrepareForNewSrcFile();

    /// Collects the entries of covered and of uncovered files in order of appearance. Each array is owned by
    /// the caller (release with free()), null when empty. Returns a negative number on failure.
    int uiGetFilenames(int* pNumCovered, filename_list_node*** pCovered, int* pNumUncovered,
                       filename_list_node*** pUncovered) const;

    /// The entry made last, which receives the figures of the file being marked; null before the first.
    filename_list_node* file_list_tail() const { return files_.tail(); }

  private:
    std::unique_ptr<file_list_node> current_; ///< positions of the current file; null between files
    file_list files_;
};

extern coverage_list* const g_cl; ///< the single store, alive for the whole process
