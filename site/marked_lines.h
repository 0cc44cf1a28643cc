// The lines of a source file with what the site marks in them: the colours of vexcov's listing.
#pragma once

#include "analysis/line_walk.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

/// What a piece of code is marked as.
enum class mark : unsigned char {
    none,       ///< covered, or no code
    partial,    ///< several blocks begin here, and some of them ran
    block,      ///< did not run, in a function that did
    function,   ///< of a function that was never called
    infeasible, ///< taken out by a marker
};

/// From here to the next piece, or to the end of the line, a mark is in force.
struct marked_piece {
    std::size_t offset; ///< from the start of the line
    mark kind;
    bool begins_place; ///< an uncovered place begins here
};

/// Walks the lines of an analysis. An uncovered place goes on as long as its mark is in force, over as many
/// lines as it takes; each function that was never called is one.
class marked_lines {
  public:
    /// `analysis` must outlive this.
    explicit marked_lines(const source_analysis& analysis)
        : walk_(analysis), no_partial_(analysis.no_partial) {}

    /// Goes on to the next line; false behind the last one.
    bool next();

    const source_line& line() const { return walk_.line(); }
    const line_walk& walk() const { return walk_; }

    /// The pieces of the line, ascending; the first begins the line.
    std::span<const marked_piece> pieces() const { return pieces_; }

    /// The gravest mark of the line's text.
    mark gravest() const;

  private:
    mark mark_of(Color color) const;
    void add(std::size_t offset, mark kind, bool is_new_function);

    line_walk walk_;
    bool no_partial_;
    mark last_ = mark::none; ///< in force at the end of the line before
    std::vector<marked_piece> pieces_;
};

/// True for the marks of code that did not run.
constexpr bool is_uncovered(mark kind) {
    return kind == mark::block || kind == mark::function;
}
