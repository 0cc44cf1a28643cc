// One comment of a source file.
#pragma once

#include <string>
#include <utility>

struct comment_t {
    /// What kind of marker a comment is. The values are those that registry_comment returns; 3 is not used.
    enum comment_type {
        simple_mark = 0, ///< disables its line, or the function whose brace follows
        begin_mark = 1,  ///< begins a disabled block
        end_mark = 2,    ///< ends one
        no_mark = 4      ///< an ordinary comment
    };

    std::string text;             ///< the comment from its opening slash on; trimmed once it is registered
    unsigned long start_line = 0; ///< line on which it starts
    unsigned long end_line = 0;   ///< line on which it ends
    comment_type type = no_mark;

    comment_t() = default;
    comment_t(std::string comment_text, unsigned long start, unsigned long end, comment_type kind)
        : text(std::move(comment_text)), start_line(start), end_line(end), type(kind) {}

    static bool is_simple_comment(const comment_t& comment) { return comment.type == simple_mark; }

    /// Orders by start line only.
    static bool position_criteria(const comment_t& a, const comment_t& b) {
        return a.start_line < b.start_line;
    }
};
