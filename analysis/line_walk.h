// The lines of an analysed source file, one after the other: what every listing of it is drawn from.
//
//   line_walk walk(analysis);
//   while (walk.next())
//       ... walk.line(), walk.stretches(), walk.holds_code(), walk.count() ...
//
// A line falls into stretches of one coverage class. A class is in force from the position where it begins to
// the next position, beyond the end of the line; what a line begins with is its class at the start.
#pragma once

#include "analysis/source_analysis.h"
#include "driver/color_table.h"

#include <cstddef>
#include <memory>
#include <span>
#include <vector>

class code_lines;
class scope_counts;

/// One line of the source.
struct source_line {
    std::uint32_t number; ///< 1-based
    std::string_view text;
    bool has_newline; ///< false for a last line without; the text never holds it
    bool disabled;    ///< a marker takes it out: it is shown as infeasible, whatever its stretches are
    Color color;      ///< class in force at its start
};

/// From here to the next stretch, or to the end of the line, a class is in force.
struct line_stretch {
    std::size_t offset; ///< from the start of the line; that of the newline for a position behind the text
    Color color;
    const block_list_node* position; ///< what begins it; null for indentation, which takes the class of the
                                     ///< first statement behind it
};

/// Blocks that a line is shown in.
struct line_blocks {
    std::uint32_t total;
    std::uint32_t executed; ///< of those
};

/// Coverage class of a position from its count, its numbers of blocks and of executed blocks, and its flags
/// (see block_list_node). In differential mode the counts are differences: none means that nothing is new
/// here.
Color getColor(std::uint64_t count, bool bNotInRef, unsigned int numBlocks, unsigned int numExecuted,
               bool bAdjusted, bool differential);

class line_walk {
  public:
    /// `analysis` must outlive the walk, and its text must be there. Without `colours` no line has stretches,
    /// and the color of each is unknown; the rest is the same.
    explicit line_walk(const source_analysis& analysis, bool colours = true);
    ~line_walk();
    line_walk(const line_walk&) = delete;
    line_walk& operator=(const line_walk&) = delete;

    /// Goes on to the next line; false behind the last one. All that follows is about this line.
    bool next();

    const source_line& line() const { return line_; }

    /// The positions recorded on the line, ascending; some may lie behind its end.
    std::span<const block_list_node> positions() const { return positions_; }

    /// The stretches behind the line's start, ascending; none where no position begins. A stretch may have
    /// the class of the one before.
    std::span<const line_stretch> stretches() const { return stretches_; }

    /// True when the line holds code: not only blanks, comments and preprocessor lines, and inside a
    /// function. A called function reaches from its first to its last block, one that was never called from
    /// its first line to the brace that closes its body. The brace that closes a case behind its break is
    /// none: nothing gets there.
    bool holds_code();

    /// How often the line was executed: the largest of the count in force at its first code and of those of
    /// the blocks that begin on it; 0 for a line without code. A closing adjustment is no execution; a block
    /// that has no other count goes on with the one before. A line that closes a pair of braces, and at which
    /// no block begins, has the count of that pair's end (scope_counts.h).
    std::uint64_t count();

    /// The blocks that the line's code is shown in: those that begin on it and, where its code stands in
    /// front of them, what is in force there, as one block, or two where it was executed in part. None for a
    /// line without code; in differential mode, where a line is new or not, one. What the page shows in the
    /// colour of covered code is executed in all of them. Some are executed just when count() is not 0.
    line_blocks blocks();

  private:
    void find_positions();
    void find_stretches();
    std::size_t look_ahead() const;
    void pass_position(const block_list_node& position);
    void examine_code();
    void add_blocks(const block_list_node& position);
    void count_blocks(std::size_t first, bool continued);

    const source_analysis& analysis_;
    bool colours_;
    std::span<const block_list_node> all_;       ///< positions of the file
    std::span<const block_list_node> positions_; ///< those of the line
    std::size_t at_ = 0;                         ///< offset of the next line in the text
    source_line line_ = {};
    Color color_ = clrUnknown; ///< in force at the end of the line
    std::vector<line_stretch> stretches_;

    std::unique_ptr<code_lines> code_; ///< made at the first question, as the next
    std::unique_ptr<scope_counts> scopes_;
    std::uint32_t examined_ = 0; ///< line that the three below belong to
    bool holds_code_ = false;
    std::uint64_t count_ = 0;
    line_blocks blocks_ = {};
    std::size_t counted_ = 0;      ///< positions that were passed
    std::uint64_t in_force_ = 0;   ///< count of the last of them
    std::uint64_t last_count_ = 0; ///< that of the last one with a count, other than a function never called
};
