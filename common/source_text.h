// The text of a source file with its lines: from places to offsets and back.
#pragma once

#include "common/source_position.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

class source_text {
  public:
    /// Reads `path` through the loader of the run, so that one file at a time is in memory. The text is valid
    /// until another one is read there.
    explicit source_text(const std::string& path);

    /// False when there is no such regular file; then no position is in it.
    bool readable() const { return readable_; }

    /// True when a character of the file stands at `position`; a newline is not one.
    bool contains(source_position position) const;

    std::string_view text() const { return text_; }

    /// Offset of a position that contains() or that is the end of a line; nothing when the file has no such
    /// place.
    std::optional<std::size_t> offset_of(source_position position) const;

    /// The position of a byte in or behind line `line` (a hint that saves the search).
    source_position position_of(std::size_t offset, std::uint32_t line) const;

    /// The position of any byte of the text.
    source_position position_of(std::size_t offset) const;

  private:
    std::string_view text_; // before readable_, whose initialiser sets it
    bool readable_;
    std::vector<std::size_t> line_starts_; ///< offset of each line, then the size of the text plus one
};
