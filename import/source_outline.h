// The outline of a C or C++ source file: where the heads of its functions and the branches of "else" begin.
// Compilers tell where a body or a name is; to a reader, a function begins at its return type or template
// line.
#pragma once

#include "common/source_text.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

/// What stands in front of a body, from its first code on: template line, attributes, return type, name,
/// parameters, initialisers of members. The places are offsets into the text.
struct outlined_head {
    std::uint32_t begin;   ///< the first code behind the ; { } label or directive in front of it
    std::uint32_t body;    ///< an opening brace behind it, or the semicolon of "= default"
    std::uint32_t comment; ///< the comment directly in front of `body`; `body` itself for none
    bool starts_line;      ///< no code stands in front of it on its line
};

/// Code behind an "else": a brace, and the first code inside. The places are offsets into the text.
struct outlined_branch {
    std::uint32_t code;
    std::uint32_t word; ///< the "else" itself
};

class source_outline {
  public:
    /// Reads the text once. That of a file that cannot be read is empty.
    explicit source_outline(const source_text& source);

    /// The head of the function of which a part (its name, an initialiser, its body) begins at offset
    /// `place`, and which ends at `end`. Null for a lambda, and where the text has no head, as for what a
    /// macro makes.
    const outlined_head* head_of(std::size_t place, std::size_t end) const;

    /// Offset of the "else" that leads to the code at offset `code`.
    std::optional<std::size_t> else_before(std::size_t code) const;

  private:
    const source_text& source_;
    std::vector<outlined_head> heads_;      ///< ascending by body; those of statements, too
    std::vector<outlined_branch> branches_; ///< ascending by code
};
