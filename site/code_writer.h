// The code of a source page: line numbers, counts, marks and colours.
//
//   <div>                                                            a hundred lines, laid out when they show
//   <a id=12 href=#12 tabindex=-1>12</a>code                         a line
//   <a id=13 href=#13 tabindex=-1 class=u data-c=0 title="...">13</a>...  one with blocks that begin on it
//   <a id=14 href=#14 tabindex=-1 class=new>+14</a>code              a line that a diff changes
//   <a id=u2 href=#u1>prev</a><a href=#u3>next</a><u>code</u>        the second of three uncovered places
//   <b>, <i>, <q>                                                    keyword, comment, string
//
// Line numbers and links are no part of what the reader selects (site.css), so that a copy is the source.
#pragma once

#include "changes/unified_diff.h"
#include "common/text_buffer.h"
#include "site/code_survey.h"
#include "site/line_counts.h"
#include "site/syntax.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

/// The number of a line in decimal.
struct line_number {
    std::array<char, 16> digits = {'0'};
    std::size_t length = 1;

    void increment();
};

/// Lines of a source that a change is about.
using changed_lines = std::vector<line_range>;

class code_writer {
  public:
    /// `survey`: of the analysis. `changed`: lines to be pointed out, ascending. All must outlive this.
    code_writer(text_buffer& out, const source_analysis& analysis, const code_survey& survey,
                const changed_lines& changed);

    /// Writes all lines.
    void write();

    /// Instead: writes the changed lines with those around them, each of which leads to itself on the page
    /// `whole` of the source.
    void write_excerpts(std::string_view whole);

  private:
    bool next_line();
    void skip_line();
    std::size_t next_offset() const;
    bool is_changed();
    bool is_near_change() const;
    void write_line();
    void write_anchor();
    mark line_mark();
    std::span<const block_list_node> counted_positions();
    void write_piece(std::size_t from, std::size_t to);
    void write_token(std::size_t from, std::size_t end);
    void write_keyword(std::string_view word);
    void change_mark(const mark_change& change);
    void write_place_links();
    void set_syntax(syntax_kind kind);
    void close_mark();
    void open_mark();
    bool may_colour() const;

    text_buffer& out_;
    const source_analysis& analysis_;
    const code_survey& survey_;
    const changed_lines& changed_;
    std::string_view whole_; ///< page that excerpts lead to; empty for the whole source
    syntax_reader syntax_;   ///< its piece is the one at hand, or the next
    bool has_syntax_;

    std::uint32_t line_ = 0; ///< number of the line at hand, and as text
    line_number number_;
    std::size_t line_begin_ = 0; ///< its offsets in the text: the second is that of its newline
    std::size_t line_end_ = 0;
    std::size_t next_change_ = 0; ///< of the survey
    std::size_t next_run_ = 0;
    std::size_t next_changed_ = 0;
    std::size_t next_position_ = 0;

    std::uint32_t place_ = 0;                     ///< number of the last place that began
    mark in_force_ = mark::none;                  ///< mark of the text at hand
    mark open_mark_ = mark::none;                 ///< mark whose element is open
    syntax_kind open_syntax_ = syntax_kind::none; ///< and the one within
    std::size_t syntax_bytes_ = 0;                ///< markup of the language's colours so far
};
