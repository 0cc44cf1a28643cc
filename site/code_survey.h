// What is marked in a source, all in all: the page says so before it shows the code.
#pragma once

#include "site/marked_lines.h"

#include <cstddef>
#include <cstdint>
#include <vector>

/// From here on a mark is in force.
struct mark_change {
    std::size_t offset; ///< in the text
    mark kind;
    bool begins_place; ///< an uncovered place begins here
};

/// Where the marks of a source are, which its page says before it shows the code.
struct code_survey {
    std::vector<std::size_t> line_ends; ///< of each line, the offset of its newline or of the text's end
    std::uint32_t places = 0;           ///< uncovered ones
    std::uint32_t infeasible_lines = 0; ///< lines that markers take out
    std::vector<mark_change> changes;   ///< ascending

    /// Lines with a mark, by the gravest on each, joined where they follow each other in one kind.
    struct run {
        std::uint32_t first;
        std::uint32_t last;
        mark kind;
    };
    std::vector<run> runs;

    std::uint32_t lines() const { return static_cast<std::uint32_t>(line_ends.size()); }
};

/// Surveys the sources of a walk, line by line.
class code_surveyor {
  public:
    explicit code_surveyor(bool no_partial) : marks_(no_partial) {}

    /// Adds the line that `walk` is at, of which colours are wanted.
    void add(const line_walk& walk);

    /// The survey of the lines that were added. What is added then is another source.
    code_survey finish();

  private:
    code_survey survey_;
    marked_lines marks_;
    std::size_t line_begin_ = 0; ///< offset of the next line
    mark last_ = mark::none;     ///< in force in front of it
};
