#include "import/source_text.h"

#include "common/source_file.h"

#include <algorithm>
#include <cstring>

source_text::source_text(const std::string& path) : readable_(load_source(path.c_str(), &text_)) {
    if (!readable_)
        return;
    line_starts_.reserve(text_.size() / 32); // enough for most sources
    line_starts_.push_back(0);
    for (std::size_t i = text_.find('\n'); i != std::string_view::npos; i = text_.find('\n', i + 1))
        line_starts_.push_back(i + 1);
    line_starts_.push_back(text_.size() + 1);
}

std::optional<std::size_t> source_text::offset_of(source_position position) const {
    if (!readable_ || position.line >= line_starts_.size())
        return std::nullopt;
    const std::size_t offset = line_starts_[position.line - 1] + position.column - 1;
    if (offset >= line_starts_[position.line])
        return std::nullopt;
    return offset;
}

bool source_text::contains(source_position position) const {
    const std::optional<std::size_t> offset = offset_of(position);
    return offset && *offset < text_.size() && text_[*offset] != '\n';
}

source_position source_text::position_of(std::size_t offset, std::uint32_t line) const {
    while (line + 1 < line_starts_.size() && line_starts_[line] <= offset)
        ++line;
    return {line, static_cast<std::uint32_t>(offset - line_starts_[line - 1] + 1)};
}

/// The offset behind the line that `offset` lies in, and behind those that it continues with a backslash.
static std::size_t behind_line(std::string_view text, std::size_t offset) {
    for (;;) {
        const std::size_t newline = text.find('\n', offset);
        if (newline == std::string_view::npos)
            return text.size();
        std::size_t last = newline;
        while (last > offset && text[last - 1] == '\r')
            --last;
        offset = newline + 1;
        if (last == 0 || text[last - 1] != '\\')
            return offset;
    }
}

static std::size_t behind_comment(std::string_view text, std::size_t offset) {
    const std::size_t end = text.find("*/", offset + 2);
    return end == std::string_view::npos ? text.size() : end + 2;
}

/// The offset behind what is no code at `offset`; `offset` itself where code begins.
std::size_t code_cursor::pass(std::size_t offset, bool* line_begin) const {
    const std::string_view text = source_.text();
    const std::string_view two = text.substr(offset, 2);
    switch (text[offset]) {
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
            return behind_line(text, offset);
        }
        return two == "/*" ? behind_comment(text, offset) : offset;
    case '#':
        return *line_begin ? behind_line(text, offset) : offset;
    default:
        return offset;
    }
}

static bool is_name_character(char c) {
    return c == '_' || (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

/// The offset behind the string or character literal that begins at `offset`, at most the end of its line.
static std::size_t behind_literal(std::string_view text, std::size_t offset) {
    const char quote = text[offset];
    for (++offset; offset < text.size() && text[offset] != '\n'; ++offset) {
        if (text[offset] == quote)
            return offset + 1;
        if (text[offset] == '\\' && offset + 1 < text.size())
            ++offset;
    }
    return offset;
}

/// In 1'000 and 0xab'cd the apostrophe begins no literal.
static bool separates_digits(std::string_view text, std::size_t offset) {
    const char before = offset == 0 ? ' ' : text[offset - 1];
    return text[offset] == '\'' && ((before >= '0' && before <= '9') || (before >= 'a' && before <= 'f') ||
                                    (before >= 'A' && before <= 'F'));
}

/// A region that ends with a macro ends at the macro's name. Passes the arguments in parentheses that follow
/// the name, if any. When they have no end, there is no code behind them.
std::size_t code_cursor::pass_arguments(std::size_t offset) const {
    const std::string_view text = source_.text();
    if (offset == 0 || !is_name_character(text[offset - 1]))
        return offset;
    const std::size_t open = text.find_first_not_of(" \t", offset);
    if (open == std::string_view::npos || text[open] != '(')
        return offset;
    std::size_t depth = 0;
    for (std::size_t i = open; i < text.size();) {
        const char c = text[i];
        if (text.substr(i, 2) == "/*") {
            i = behind_comment(text, i);
        } else if (text.substr(i, 2) == "//") {
            i = behind_line(text, i);
        } else if ((c == '"' || c == '\'') && !separates_digits(text, i)) {
            i = behind_literal(text, i);
        } else {
            depth += c == '(' ? 1 : 0;
            depth -= c == ')' ? 1 : 0;
            ++i;
            if (depth == 0)
                return i;
        }
    }
    return text.size();
}

std::optional<source_position> code_cursor::search(source_position from) const {
    const std::optional<std::size_t> start = source_.offset_of(from);
    if (!start)
        return std::nullopt;
    const std::string_view text = source_.text();
    std::uint32_t line = from.line;
    bool line_begin = from.column == 1;
    for (std::size_t offset = pass_arguments(*start); offset < text.size();) {
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
