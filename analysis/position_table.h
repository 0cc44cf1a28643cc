// The source positions of one file at which blocks start, with what is recorded there.
//
// Positions are entered and found through a hash table, so that neither many blocks on a line nor their order
// matters, and then put in order once.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

/// Count of a function's entry for which the dynamic profile has no data at all.
constexpr std::uint64_t NEVER_ENTERED = ~std::uint64_t{0};

/// One source position at which at least one block starts.
struct block_list_node {
    std::uint32_t line;          ///< 1-based
    std::uint32_t column;        ///< 1-based, in bytes
    std::uint64_t count;         ///< sum of the blocks' execution counts, or NEVER_ENTERED
    std::uint32_t numBlocks;     ///< blocks recorded here, closing adjustments included
    std::uint32_t numExecuted;   ///< of those, with a count other than 0
    std::uint32_t numUnexecuted; ///< of those, with a count of 0
    std::uint32_t
        numAdjusted : 31;        ///< closing adjustments of functions that lie here, each one block run once
    std::uint32_t bNotInRef : 1; ///< some block here belongs to a function that the reference run lacks

    bool bAdjusted() const { return numAdjusted != 0; }
};

/// Newlines of `text`, and one more for a last line without.
std::uint32_t count_lines(std::string_view text);

class position_table {
  public:
    /// `lines`: count_lines of the text, plus one. With 0, for a file that is not there, every block goes to
    /// line 1, column 1.
    explicit position_table(std::uint32_t lines = 0) : lines_(lines) {}

    std::uint32_t lines() const { return lines_; }

    /// Records one block; a line beyond the end of the file means line 1, column 1. When `ppUnexecuted` is
    /// given and some block at the position was executed, it receives the address of the position's number of
    /// unexecuted blocks, valid until the next recording call; else null. False for lack of memory.
    bool add_block(std::uint32_t line, std::uint32_t column, std::uint64_t count, bool notInReference,
                   std::uint32_t** ppUnexecuted);

    /// Records a function's closing adjustment: one more block, executed once, and none unexecuted. False for
    /// lack of memory.
    bool adjust(std::uint32_t line, std::uint32_t column);

    /// What is recorded at a position, or null.
    const block_list_node* find(std::uint32_t line, std::uint32_t column) const;

    /// Puts the positions in order of line and column.
    void sort();

    /// All positions; in order only behind sort().
    const std::vector<block_list_node>& positions() const { return nodes_; }

  private:
    block_list_node* find_or_create(std::uint32_t line, std::uint32_t column);
    std::size_t slot_of(std::uint32_t line, std::uint32_t column) const;
    void rehash(std::size_t slotCount);

    std::uint32_t lines_;
    std::vector<block_list_node> nodes_; ///< in order of creation or, when sorted_, of position
    std::vector<std::uint32_t> slots_;   ///< hash table: index in nodes_ plus one, 0 if free; not if sorted_
    bool sorted_ = false;
};
