// The text of the source file whose functions are being laid out, and the search for the next code in it.
#pragma once

#include "import/source_region.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

class source_text {
  public:
    /// Reads `path` through the common source cache, so that one file at a time is in memory. The text is
    /// valid until another one is read there.
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

  private:
    std::string_view text_; // before readable_, whose initialiser sets it
    bool readable_;
    std::vector<std::size_t> line_starts_; ///< offset of each line, then the size of the text plus one
};

/// Finds code for one function of a source file.
class code_cursor {
  public:
    /// `skipped`: what the preprocessor took out of the function, ascending by start. Both must outlive this.
    code_cursor(const source_text& source, const std::vector<source_extent>& skipped)
        : source_(source), skipped_(skipped) {}

    /// The first character of code at or behind `from`. Blanks, comments, preprocessor lines, skipped text
    /// and the punctuation ; ) } are no code. Nothing when the file ends before. Calls with ascending
    /// positions take time linear in the text.
    std::optional<source_position> next_code(source_position from);

  private:
    std::size_t pass(std::size_t offset, bool* line_begin) const;
    std::size_t pass_arguments(std::size_t offset) const;
    std::optional<source_position> search(source_position from) const;

    const source_text& source_;
    const std::vector<source_extent>& skipped_;
    bool searched_ = false;                     ///< the three below are the last search
    source_position last_from_ = {};            ///< where it began
    std::optional<source_position> last_found_; ///< what it gave
};
