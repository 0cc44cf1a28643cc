// How often the end of a pair of braces is reached. No block begins at a closing brace, so the count in force
// there may be that of a branch just in front of it:
//
//   while (more()) {          10
//       if (failed())
//           stop();            0
//   }                         10
//
// The count of the end is that of the last statement of the pair itself at which a block begins; that of the
// opening brace where there is none, where the pair is that of a switch, and where it ends in a jump, as the
// compiler's own coverage has it.
#pragma once

#include "analysis/code_lines.h"

#include <cstddef>
#include <cstdint>
#include <vector>

/// To be fed with the blocks of a file in their order.
class scope_counts {
  public:
    /// `marks`: of the file; must outlive this.
    explicit scope_counts(const std::vector<code_mark>& marks) : marks_(marks) {}

    /// Goes on to `place`, up to which `in_force` is the count in force.
    void pass_marks(source_position place, std::uint64_t in_force);

    /// A block begins at the place that pass_marks went to.
    void pass_block(source_position place, std::uint64_t count);

    /// The count of the end of the innermost pair that is open.
    std::uint64_t count_at_end() const;

    /// True when nothing gets there: the pair belongs to a label of a switch and ends in a jump.
    bool is_dead_end() const;

  private:
    /// A pair of braces that is open.
    struct scope {
        std::uint64_t entered;   ///< count of the opening brace
        std::uint64_t count;     ///< of the last statement at which a block begins
        std::size_t parentheses; ///< that are open around it
        bool of_label;           ///< it stands behind a label
        bool is_switch = false;
        bool in_jump = false;     ///< the statement at hand is a jump
        bool behind_jump = false; ///< so is the one in front of it
    };

    void end_statement(const code_mark& mark);

    const std::vector<code_mark>& marks_;
    std::size_t passed_ = 0; ///< marks
    std::size_t parentheses_ = 0;
    std::vector<scope> scopes_;
};
