// The lines of a source file, for blocks that are known by their line alone.
#pragma once

#include "common/source_text.h"
#include "import/source_outline.h"
#include "import/source_region.h"

#include <cstdint>
#include <optional>
#include <string_view>

class source_lines {
  public:
    /// `source` must outlive this. Where it cannot be read, every line is empty.
    explicit source_lines(const source_text& source) : source_(source) {}

    bool readable() const { return source_.readable(); }

    /// The text of a line without its newline; empty where the file has no such line.
    std::string_view text(std::uint32_t line) const;

    /// The line's first character that is not blank; column 1 where there is none.
    source_position first_code(std::uint32_t line) const;

    /// The "else" that leads to the code at `code`, if any. `outline`: that of the file.
    std::optional<source_position> else_before(source_position code, const source_outline& outline) const;

    /// The place behind the line's last character.
    source_position behind(std::uint32_t line) const;

    /// Whether the file can be read and ends before `line`: it has changed since the program was built.
    bool beyond_end(std::uint32_t line) const;

  private:
    const source_text& source_;
};
