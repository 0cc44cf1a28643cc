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

/// Follows a walk over the lines of a source. An uncovered place goes on as long as its mark is in force,
/// over as many lines as it takes; each function that was never called is one.
class marked_lines {
  public:
    explicit marked_lines(bool no_partial) : no_partial_(no_partial) {}

    /// What is taken next is the first line of a source.
    void begin();

    /// Goes on to the line that `walk` is at, the next one of the source.
    void take(const line_walk& walk);

    /// The pieces of the line, ascending; the first begins the line.
    std::span<const marked_piece> pieces() const { return pieces_; }

    /// The gravest mark of the text of the line, which `walk` is at.
    mark gravest(const line_walk& walk) const;

  private:
    mark mark_of(Color color) const;
    void add(std::size_t offset, mark kind, bool is_new_function);

    bool no_partial_;
    mark last_ = mark::none; ///< in force at the end of the line before
    std::vector<marked_piece> pieces_;
};

/// True for the marks of code that did not run.
constexpr bool is_uncovered(mark kind) {
    return kind == mark::block || kind == mark::function;
}
