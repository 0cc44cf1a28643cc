// The list of every source file met in the run with its figures, from which the index pages are made.
#pragma once

#include <cstdint>
#include <string_view>
#include <unordered_map>

/// Bits of filename_list_node::flags.
enum : std::uint32_t {
    FILE_EXISTS = 1,    ///< the source file could be opened when its entry was made; no page tells yet
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

/// The entries, owned; each name has one.
class file_list {
  public:
    file_list() = default;
    ~file_list();
    file_list(const file_list&) = delete;
    file_list& operator=(const file_list&) = delete;

    /// Appends an entry unless the name has one. False after a message for lack of memory.
    bool add(const char* name);

    filename_list_node* head() const { return head_; }

    /// The entry made last; null before the first.
    filename_list_node* tail() const { return tail_; }

  private:
    filename_list_node* head_ = nullptr;
    filename_list_node* tail_ = nullptr;
    std::unordered_map<std::string_view, filename_list_node*> by_name_; ///< keys point into the entries
};

/// Collects the entries from `head` on with any bit of `flag` in an array that the caller owns (release with
/// free()), null when there are none. Returns their number, also through `pNum`, or -1 after a message on
/// standard output.
int uiGetFilenamesForFlag(filename_list_node* head, std::uint32_t flag, int* pNum,
                          filename_list_node*** pArray);
