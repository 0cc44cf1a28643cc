// Looks for code in a source file, from one place to the next.
#pragma once

#include "common/source_position.h"
#include "common/source_text.h"

#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

/// Finds code for one function of a source file.
class code_cursor {
  public:
    /// `skipped`: what the preprocessor took out of the function, ascending by start. Both must outlive this.
    /// `end`: where the search ends, such as the function does; a place that the file does not have is its
    /// end.
    code_cursor(const source_text& source, const std::vector<source_extent>& skipped, source_position end)
        : source_(source), skipped_(skipped),
          text_(source.text().substr(0, source.offset_of(end).value_or(source.text().size()))) {}

    /// The first character of code at or behind `from`. Blanks, comments, preprocessor lines, skipped text
    /// and the punctuation ; ) } are no code. Nothing when the end comes before. Calls with ascending
    /// positions take time linear in the text.
    std::optional<source_position> next_code(source_position from);

  private:
    std::size_t pass(std::size_t offset, bool* line_begin) const;
    std::size_t pass_arguments(std::size_t offset) const;
    std::optional<source_position> search(source_position from) const;

    const source_text& source_;
    const std::vector<source_extent>& skipped_;
    std::string_view text_;                     ///< up to the end
    bool searched_ = false;                     ///< the three below are the last search
    source_position last_from_ = {};            ///< where it began
    std::optional<source_position> last_found_; ///< what it gave
};
