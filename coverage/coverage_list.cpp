#include "coverage/coverage_list.h"

#include "common/fatal.h"
#include "common/source_file.h"
#include "coverage/function_table.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <unistd.h>

static coverage_list the_coverage_list;
coverage_list* const g_cl = &the_coverage_list;

constexpr std::size_t kFirstSlots = 1024; ///< of a position table; 4 KiB

/// Newlines of `text`, and one more for a last line without.
static std::size_t count_lines(std::string_view text) {
    std::size_t lines = 0;
    for (std::size_t at = 0; at < text.size(); ++lines) {
        const std::size_t newline = text.find('\n', at);
        at = newline == std::string_view::npos ? text.size() : newline + 1;
    }
    return lines;
}

file_list_node::file_list_node(const char* filename, int* pNotFound) {
    if (pNotFound)
        *pNotFound = 0;
    try {
        filename_ = filename;
        slots_.assign(kFirstSlots, 0);
    } catch (const std::bad_alloc&) { // infeasible: begin
        std::printf("Error - Not enough memory!! (file_list_node::file_list_node): %s\n", filename);
        pgt_Exit(1);
        // infeasible: end
    }
    std::string_view text;
    if (load_source(filename, &text)) {
        lineCount_ = static_cast<std::uint32_t>(count_lines(text) + 1);
        return;
    }
    if (!pNotFound) {
        std::printf("Error - File %s not found!\n", filename);
        pgt_Exit(1);
    }
    *pNotFound = 1;
    std::printf("\nWarning - File %s not found!\n", filename);
}

/// Order of the positions in the source.
static bool lies_before(const block_list_node& a, const block_list_node& b) {
    return a.line != b.line ? a.line < b.line : a.column < b.column;
}

/// Differs from run to run, so that no input can be made whose positions collide. The order in the table is
/// never visible.
static std::uint64_t random_seed() {
    std::uint64_t seed = 0;
    if (getentropy(&seed, sizeof seed) != 0)
        seed = static_cast<std::uint64_t>(getpid()); // infeasible
    return seed;
}
static const std::uint64_t hash_seed = random_seed();

/// The slot that holds the position, or the free one where it belongs.
std::size_t file_list_node::slot_of(unsigned int line, unsigned int column) const {
    std::uint64_t hash = (std::uint64_t{line} << 32 | column) + hash_seed;
    hash = (hash ^ hash >> 30) * 0xBF58476D1CE4E5B9;
    hash = (hash ^ hash >> 27) * 0x94D049BB133111EB;
    hash ^= hash >> 31;
    const std::size_t mask = slots_.size() - 1;
    std::size_t slot = static_cast<std::size_t>(hash) & mask;
    while (slots_[slot] != 0) {
        const block_list_node& node = nodes_[slots_[slot] - 1];
        if (node.line == line && node.column == column)
            break;
        slot = (slot + 1) & mask;
    }
    return slot;
}

/// Enters all nodes into a hash table of at least twice their number.
void file_list_node::rehash(std::size_t slotCount) {
    slots_.assign(slotCount, 0);
    for (std::size_t i = 0; i < nodes_.size(); ++i)
        slots_[slot_of(nodes_[i].line, nodes_[i].column)] = static_cast<std::uint32_t>(i + 1);
    sorted_ = false;
}

block_list_node* file_list_node::find_or_create(unsigned int line, unsigned int column) {
    // Deliberate: where the source has become shorter than what was compiled, its blocks still count; they
    // show at its beginning.
    if (line > lineCount_)
        line = column = 1;
    try {
        if (sorted_ || nodes_.size() * 2 >= slots_.size())
            rehash(slots_.size() * (nodes_.size() * 2 >= slots_.size() ? 2 : 1));
        const std::size_t slot = slot_of(line, column);
        if (slots_[slot] == 0) {
            nodes_.push_back({line, column, 0, 0, 0, 0, false, false});
            slots_[slot] = static_cast<std::uint32_t>(nodes_.size());
        }
        return &nodes_[slots_[slot] - 1];
    } catch (const std::bad_alloc&) {
        // infeasible: begin
        pgt_OutOfMemory();
        return nullptr;
        // infeasible: end
    }
}

const block_list_node* file_list_node::find(unsigned int line, unsigned int column) const {
    if (!sorted_) {
        const std::uint32_t entry = slots_[slot_of(line, column)];
        return entry == 0 ? nullptr : &nodes_[entry - 1];
    }
    const block_list_node wanted = {line, column, 0, 0, 0, 0, false, false};
    const auto found = std::lower_bound(nodes_.begin(), nodes_.end(), wanted, lies_before);
    return found != nodes_.end() && !lies_before(wanted, *found) ? &*found : nullptr;
}

const std::vector<block_list_node>& file_list_node::sorted_positions() {
    if (!sorted_) {
        std::sort(nodes_.begin(), nodes_.end(),
                  [](const block_list_node& a, const block_list_node& b) { return lies_before(a, b); });
        sorted_ = true;
    }
    return nodes_;
}

bool file_list_node::bAddBlockCount(unsigned int line, unsigned int column, std::uint64_t count,
                                    bool bNotInRef, unsigned int** ppUnexecuted) {
    if (ppUnexecuted)
        *ppUnexecuted = nullptr;
    block_list_node* node = find_or_create(line, column);
    if (!node)
        return false;
    if (count == NEVER_ENTERED) {
        if (node->count == 0)
            node->count = NEVER_ENTERED;
    } else if (node->count == NEVER_ENTERED) {
        node->count = count;
    } else {
        node->count += count; // Deliberate: wraps, as the instrumented program's own counters do
    }
    node->bNotInRef = node->bNotInRef || bNotInRef;
    ++node->numBlocks;
    ++(count == 0 ? node->numUnexecuted : node->numExecuted);
    if (ppUnexecuted && node->numExecuted > 0)
        *ppUnexecuted = &node->numUnexecuted;
    return true;
}

bool file_list_node::bAdjustLastBlock(unsigned int line, unsigned int column) {
    block_list_node* node = find_or_create(line, column);
    if (!node)
        return false;
    ++node->count;
    ++node->numBlocks;
    ++node->numExecuted;
    node->numUnexecuted = 0;
    node->bAdjusted = true;
    return true;
}

bool file_list_node::bFetchHitCount(unsigned int line, unsigned int column, std::uint64_t* pCount,
                                    const block_list_node** ppNode, bool* pbNotInRef,
                                    unsigned int* pNumBlocks, unsigned int* pNumExecuted,
                                    bool* pbAdjusted) const {
    // Deliberate: blocks may be recorded one line further than they are looked up. A block behind the last
    // line belongs to no text and shows nowhere.
    if (line >= lineCount_)
        return false;
    static const block_list_node kNothing = {0, 0, 0, 0, 0, 0, false, false};
    const block_list_node* node = find(line, column);
    const block_list_node& shown = node ? *node : kNothing;
    *pCount = shown.count;
    if (ppNode)
        *ppNode = node;
    if (pbNotInRef)
        *pbNotInRef = shown.bNotInRef;
    if (pNumBlocks)
        *pNumBlocks = shown.numBlocks;
    if (pNumExecuted)
        *pNumExecuted = shown.numExecuted;
    if (pbAdjusted)
        *pbAdjusted = shown.bAdjusted;
    return node != nullptr;
}

bool coverage_list::bAddFilename(const char* name) {
    if (filesByName_.count(name) != 0)
        return true;
    filename_list_node* entry = static_cast<filename_list_node*>(std::calloc(1, sizeof(filename_list_node)));
    char* copy = strdup(name);
    if (!entry || !copy) {
        // infeasible: begin
        std::printf("Error - out of memory!! (coverage_list::bAddFilename)\n");
        pgt_OutOfMemory();
        std::free(entry);
        std::free(copy);
        return false;
        // infeasible: end
    }
    entry->name = copy;
    std::string_view text;
    entry->flags = load_source(name, &text) ? std::uint32_t{FILE_EXISTS} : 0;
    filesByName_.emplace(copy, entry);
    (fileListTail_ ? fileListTail_->next : fileListHead_) = entry;
    fileListTail_ = entry;
    return true;
}

bool coverage_list::bSetName(const char* name) {
    if (current_)
        return true;
    int notFound = 0;
    current_ = new (std::nothrow) file_list_node(name, &notFound);
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

const std::vector<block_list_node>& coverage_list::sorted_positions() {
    static const std::vector<block_list_node> none;
    return current_ ? current_->sorted_positions() : none;
}

void coverage_list::vPrepareForNewSrcFile() {
    delete current_;
    current_ = nullptr;
    free_function_table();
}

int uiGetFilenamesForFlag(filename_list_node* head, std::uint32_t flag, int* pNum,
                          filename_list_node*** pArray) {
    int count = 0;
    for (const filename_list_node* entry = head; entry; entry = entry->next)
        count += (entry->flags & flag) != 0 ? 1 : 0;
    *pArray = nullptr;
    if (count > 0) {
        *pArray = static_cast<filename_list_node**>(
            std::malloc(static_cast<std::size_t>(count) * sizeof(filename_list_node*)));
        if (!*pArray) {
            // infeasible: begin
            std::printf("Error - Not enough memory!! (file_list_node::uiGetFilenames)\n");
            return -1;
            // infeasible: end
        }
    }
    int filled = 0;
    for (filename_list_node* entry = head; entry; entry = entry->next)
        if ((entry->flags & flag) != 0)
            (*pArray)[filled++] = entry;
    *pNum = count;
    return count;
}

int coverage_list::uiGetFilenames(int* pNumCovered, filename_list_node*** pCovered, int* pNumUncovered,
                                  filename_list_node*** pUncovered) const {
    const int covered = uiGetFilenamesForFlag(fileListHead_, FILE_COVERED, pNumCovered, pCovered);
    if (covered < 0)
        return covered;
    return uiGetFilenamesForFlag(fileListHead_, FILE_UNCOVERED, pNumUncovered, pUncovered);
}
