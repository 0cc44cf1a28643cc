// Which lines of an analysed source file hold code. The whole text is read once, when the object is made.
#pragma once

#include "analysis/source_analysis.h"

#include <cstddef>
#include <cstdint>
#include <vector>

/// What a line holds.
struct code_line {
    bool in_function;     ///< code, on a line that a function reaches
    bool inside;          ///< its first code lies inside a function, not in front of its first block
    bool inside_called;   ///< it lies inside a function that was called
    bool closes;          ///< its code is nothing but "}" and what may follow that: ) ] ; ,
    std::uint32_t column; ///< of its first code, 1-based; 0 for none
};

constexpr std::uint32_t kNone = 0xffffffff; ///< no mark

/// What a statement begins with.
enum class code_word : std::uint8_t {
    other,
    branch_else,
    label, ///< of a switch: case, default
    jump   ///< break, continue, goto, return, throw
};

/// A brace, parenthesis or semicolon of the code. Of conditional text only the first branch has some.
struct code_mark {
    source_position position;
    source_position next_position; ///< of the code behind it
    std::uint32_t match;           ///< index of the mark that closes it, or kNone
    char kind;
    char next;         ///< first character of the code behind it, 0 at the end; like the place not for "("
    code_word before;  ///< what stands behind it; likewise
    bool behind_label; ///< a brace that opens behind a colon
};

class code_lines {
  public:
    /// `analysis` must outlive this.
    explicit code_lines(const source_analysis& analysis);

    /// About a line; to be asked in ascending order. Valid until the next one is asked about.
    const code_line& examine(std::uint32_t line);

    /// In order.
    const std::vector<code_mark>& marks() const { return marks_; }

  private:
    void read_text();
    std::size_t read_code(std::size_t offset);
    std::size_t pass_blank(std::size_t offset, bool* line_begin);
    void pass_lines(std::size_t from, std::size_t to);
    void note_directive(std::size_t offset);
    bool is_noted() const;
    void note_code(std::size_t offset);
    void note_literal(std::size_t from, std::size_t to);
    void note_mark(std::size_t offset);
    void finish_mark(std::size_t offset);
    source_position position_of(std::size_t offset) const;
    void match_marks();
    bool declares_behind(std::size_t close) const;
    void find_bodies();
    void find_extents();
    source_extent uncalled_extent(std::uint32_t line, std::uint32_t next_line) const;

    const source_analysis& analysis_;
    /// What is known of a line.
    struct line_start {
        std::uint32_t first_code; ///< column of its first code; 0: none
        bool closes;              ///< see code_line
    };
    std::vector<line_start> starts_; ///< of each line, from line 1
    std::uint32_t line_ = 1;         ///< while reading: that of the text at hand
    std::size_t line_start_ = 0;     ///< offset at which it begins
    std::vector<bool> branches_;     ///< while reading, for each open #if: text behind an #else or #elif
    std::size_t other_branches_ = 0; ///< how many of them are
    std::vector<code_mark> marks_;
    bool mark_waits_ = false;           ///< while reading: the last mark has not met the code behind it
    std::vector<std::uint32_t> bodies_; ///< for each mark: the one that closes the body of a function whose
                                        ///< head goes on there, kNone, or kOpen for a body without end

    /// What functions reach, joined where they overlap, ascending.
    struct extent_list {
        std::vector<source_extent> extents;
        std::size_t next = 0; ///< the first of them that ends on the line asked about, or behind it

        void join();
        bool reaches(std::uint32_t line, source_position code, bool* inside);
    };
    extent_list functions_; ///< all of them
    extent_list called_;    ///< those that were called
    code_line examined_ = {};
};
