#include "common/code_cursor.h"

#include "common/code_lexer.h"

#include <algorithm>

/// The offset behind what is no code at `offset`; `offset` itself where code begins.
std::size_t code_cursor::pass(std::size_t offset, bool* line_begin) const {
    const std::string_view two = text_.substr(offset, 2);
    switch (text_[offset]) {
    case '\n':
        *line_begin = true;
        return offset + 1;
    case ' ':
    case '\t':
    case '\r':
    case '\f':
    case '\v':
        return offset + 1;
    case ';':
    case ')':
    case '}':
        *line_begin = false;
        return offset + 1;
    case '\\': // the end of a line of a macro
        return two == "\\\n" || two == "\\\r" ? offset + 1 : offset;
    case '/':
        if (two == "//") {
            *line_begin = true;
            return behind_line(text_, offset);
        }
        return two == "/*" ? behind_comment(text_, offset) : offset;
    case '#':
        return *line_begin ? behind_directive(text_, offset) : offset;
    default:
        return offset;
    }
}

/// A region that ends with a macro ends at the macro's name. Passes the arguments in parentheses that follow
/// the name, if any. When they have no end, there is no code behind them.
std::size_t code_cursor::pass_arguments(std::size_t offset) const {
    if (offset == 0 || !is_word_character(text_[offset - 1]))
        return offset;
    const std::size_t open = text_.find_first_not_of(" \t", offset);
    if (open == std::string_view::npos || text_[open] != '(')
        return offset;
    std::size_t depth = 0;
    for (std::size_t i = open; i < text_.size();) {
        const char c = text_[i];
        if (text_.substr(i, 2) == "/*") {
            i = behind_comment(text_, i);
        } else if (text_.substr(i, 2) == "//") {
            i = behind_line(text_, i);
        } else if (begins_literal(text_, i)) {
            i = behind_literal(text_, i);
        } else {
            depth += c == '(' ? 1 : 0;
            depth -= c == ')' ? 1 : 0;
            ++i;
            if (depth == 0)
                return i;
        }
    }
    return text_.size();
}

std::optional<source_position> code_cursor::search(source_position from) const {
    const std::optional<std::size_t> start = source_.offset_of(from);
    if (!start || text_.size() <= *start)
        return std::nullopt;
    std::uint32_t line = from.line;
    bool line_begin = from.column == 1;
    for (std::size_t offset = pass_arguments(*start); offset < text_.size();) {
        const std::size_t next = pass(offset, &line_begin);
        if (next != offset) {
            offset = next;
            continue;
        }
        const source_position found = source_.position_of(offset, line);
        line = found.line;
        const auto behind =
            std::upper_bound(skipped_.begin(), skipped_.end(), found,
                             [](const source_position& a, const source_extent& b) { return a < b.start; });
        if (behind == skipped_.begin() || std::prev(behind)->end <= found)
            return found;
        const std::optional<std::size_t> end = source_.offset_of(std::prev(behind)->end);
        if (!end)
            return std::nullopt;
        offset = *end;
        line_begin = std::prev(behind)->end.column == 1;
    }
    return std::nullopt;
}

std::optional<source_position> code_cursor::next_code(source_position from) {
    // Between the start of the last search and what it found is no code.
    if (searched_ && last_from_ <= from && (!last_found_ || from <= *last_found_))
        return last_found_;
    last_found_ = search(from);
    last_from_ = from;
    searched_ = true;
    return last_found_;
}
