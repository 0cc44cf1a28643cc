// The code of a source page: line numbers, counts, marks and colours.
//
//   <div>                                                            a hundred lines, laid out when they show
//   <a id=12 href=#12 tabindex=-1>12</a>code                         a line
//   <a id=13 href=#13 tabindex=-1 class=u data-c=0 title="...">13</a>...  one with blocks that begin on it
//   <a id=u2 href=#u1>prev</a><a href=#u3>next</a><u>code</u>        the second of three uncovered places
//   <b>, <i>, <q>                                                    keyword, comment, string
//
// Line numbers and links are no part of what the reader selects (site.css), so that a copy is the source.
#pragma once

#include "common/text_buffer.h"
#include "site/marked_lines.h"
#include "site/syntax.h"

#include <cstddef>
#include <cstdint>

/// What a page says about its code before it shows it.
struct code_survey {
    std::uint32_t lines = 0;
    std::uint32_t places = 0;           ///< uncovered ones
    std::uint32_t partial_lines = 0;    ///< lines with a mark of that kind as their gravest
    std::uint32_t infeasible_lines = 0; ///< lines that markers take out

    /// Lines with a mark, joined where they follow each other in one kind.
    struct run {
        std::uint32_t first;
        std::uint32_t last;
        mark kind;
    };
    std::vector<run> runs;
};

code_survey survey_code(const source_analysis& analysis);

/// The number of executions in at most four characters: 999, 1.2k, 34M.
void put_short_count(text_buffer& out, std::uint64_t count);

class code_writer {
  public:
    /// `places`: of the survey. The analysis must outlive this.
    code_writer(text_buffer& out, const source_analysis& analysis, std::uint32_t places);

    /// Writes all lines.
    void write();

  private:
    void write_line();
    void write_anchor();
    void put_titles();
    void write_piece(std::size_t from, std::size_t to);
    void begin_mark(const marked_piece& piece);
    void write_place_links();
    void set_syntax(syntax_kind kind);
    void close_mark();
    bool may_colour() const;

    text_buffer& out_;
    const source_analysis& analysis_;
    marked_lines lines_;
    syntax_reader syntax_;
    syntax_token token_;
    bool has_syntax_;
    std::uint32_t places_;
    std::uint32_t place_ = 0;                     ///< number of the last place that began
    mark open_mark_ = mark::none;                 ///< element that is open
    syntax_kind open_syntax_ = syntax_kind::none; ///< and the one within
    std::size_t line_start_ = 0;                  ///< offset of the line at hand
    std::size_t syntax_bytes_ = 0;                ///< markup of the language's colours so far
};
