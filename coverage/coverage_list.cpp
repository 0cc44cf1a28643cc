#include "coverage/coverage_list.h"

#include "common/fatal.h"
#include "common/source_file.h"
#include "coverage/function_table.h"

#include <cstdio>
#include <new>

static coverage_list the_coverage_list;
coverage_list* const g_cl = &the_coverage_list;

file_list_node::file_list_node(const char* filename, int* pNotFound) {
    if (pNotFound)
        *pNotFound = 0;
    try {
        analysis_.path = filename;
    } catch (const std::bad_alloc&) { // infeasible: begin
        std::printf("Error - Not enough memory!! (file_list_node::file_list_node): %s\n", filename);
        pgt_Exit(1);
        // infeasible: end
    }
    if (load_source(filename, &analysis_.text)) {
        analysis_.positions = position_table(count_lines(analysis_.text) + 1);
        return;
    }
    if (!pNotFound) {
        std::printf("Error - File %s not found!\n", filename);
        pgt_Exit(1);
    }
    *pNotFound = 1;
    std::printf("\nWarning - File %s not found!\n", filename);
}

bool file_list_node::bAddBlockCount(unsigned int line, unsigned int column, std::uint64_t count,
                                    bool bNotInRef, unsigned int** ppUnexecuted) {
    return analysis_.positions.add_block(line, column, count, bNotInRef, ppUnexecuted);
}

bool file_list_node::bAdjustLastBlock(unsigned int line, unsigned int column) {
    return analysis_.positions.adjust(line, column);
}

bool file_list_node::bFetchHitCount(unsigned int line, unsigned int column, std::uint64_t* pCount,
                                    const block_list_node** ppNode, bool* pbNotInRef,
                                    unsigned int* pNumBlocks, unsigned int* pNumExecuted,
                                    bool* pbAdjusted) const {
    // Deliberate: blocks may be recorded one line further than they are looked up. A block behind the last
    // line belongs to no text and shows nowhere.
    if (line >= analysis_.positions.lines())
        return false;
    static const block_list_node kNothing = {0, 0, 0, 0, 0, 0, 0, 0};
    const block_list_node* node = analysis_.positions.find(line, column);
    const block_list_node& shown = node ? *node : kNothing;
    *pCount = shown.count;
    if (ppNode)
        *ppNode = node;
    if (pbNotInRef)
        *pbNotInRef = shown.bNotInRef != 0;
    if (pNumBlocks)
        *pNumBlocks = shown.numBlocks;
    if (pNumExecuted)
        *pNumExecuted = shown.numExecuted;
    if (pbAdjusted)
        *pbAdjusted = shown.bAdjusted();
    return node != nullptr;
}

bool coverage_list::bSetName(const char* name) {
    if (current_)
        return true;
    int notFound = 0;
    current_.reset(new (std::nothrow) file_list_node(name, &notFound));
    if (!current_) {
        // infeasible: begin
        std::printf("Out of memory!! (file_list_node::bSetName %s)\n", name);
        pgt_OutOfMemory();
        return false;
        // infeasible: end
    }
    return notFound == 0;
}

bool coverage_list::bAddBlockCount(const char* name, unsigned int line, unsigned int column,
                                   std::uint64_t count, bool bNotInRef, unsigned int** ppUnexecuted) {
    return bSetName(name) && current_->bAddBlockCount(line, column, count, bNotInRef, ppUnexecuted);
}

bool coverage_list::bAdjustLastBlock(const char* name, unsigned int line, unsigned int column) {
    return bSetName(name) && current_->bAdjustLastBlock(line, column);
}

bool coverage_list::bFetchHitCount(unsigned int line, unsigned int column, std::uint64_t* pCount,
                                   bool* pbNotInRef, unsigned int* pNumBlocks, unsigned int* pNumExecuted,
                                   bool* pbAdjusted) const {
    if (current_ && current_->bFetchHitCount(line, column, pCount, nullptr, pbNotInRef, pNumBlocks,
                                             pNumExecuted, pbAdjusted))
        return true;
    if (pbNotInRef)
        *pbNotInRef = false;
    *pCount = 0;
    return false;
}

void coverage_list::vPrepareForNewSrcFile() {
    current_.reset();
    free_function_table();
}

int coverage_list::uiGetFilenames(int* pNumCovered, filename_list_node*** pCovered, int* pNumUncovered,
                                  filename_list_node*** pUncovered) const {
    const int covered = uiGetFilenamesForFlag(files_.head(), FILE_COVERED, pNumCovered, pCovered);
    if (covered < 0)
        return covered;
    return uiGetFilenamesForFlag(files_.head(), FILE_UNCOVERED, pNumUncovered, pUncovered);
}
