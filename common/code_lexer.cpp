#include "common/code_lexer.h"

#include <string>

constexpr std::size_t kLongestNumber = 80; ///< characters of a number that are looked at
constexpr std::size_t kLongestRawMark =
    16; ///< characters between the quote and the parenthesis of a raw string

std::size_t behind_line(std::string_view text, std::size_t offset) {
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

std::size_t behind_directive(std::string_view text, std::size_t offset) {
    while (offset < text.size()) {
        const std::string_view two = text.substr(offset, 2);
        if (two == "//")
            return behind_line(text, offset);
        if (two == "/*") {
            offset = behind_comment(text, offset);
        } else if (two[0] == '"') {
            offset = behind_literal(text, offset);
        } else if (two[0] == '\\') { // continues the line, or hides a quote
            offset += text.substr(offset, 3) == "\\\r\n" ? 3 : 2;
        } else if (two[0] == '\n') {
            return offset + 1;
        } else {
            ++offset;
        }
    }
    return text.size();
}

std::size_t behind_comment(std::string_view text, std::size_t offset) {
    const std::size_t end = text.find("*/", offset + 2);
    return end == std::string_view::npos ? text.size() : end + 2;
}

static bool is_digit(char c) {
    return c >= '0' && c <= '9';
}

/// In 1'000 and 0xab'cd the apostrophe begins no literal: what stands in front of it begins with a digit.
static bool separates_digits(std::string_view text, std::size_t offset) {
    if (text[offset] != '\'')
        return false;
    std::size_t start = offset;
    while (start > 0 && offset - start < kLongestNumber &&
           (is_word_character(text[start - 1]) || (text[start - 1] == '\'' && is_digit(text[start]))))
        --start;
    return is_digit(text[start]);
}

bool begins_literal(std::string_view text, std::size_t offset) {
    return text[offset] == '"' || (text[offset] == '\'' && !separates_digits(text, offset));
}

/// R, u8R, uR, UR or LR stands in front of the quote, and no longer word.
static bool is_raw_string(std::string_view text, std::size_t offset) {
    if (text[offset] != '"' || offset == 0 || text[offset - 1] != 'R')
        return false;
    std::size_t start = offset - 1;
    while (start > 0 && offset - start <= 3 && is_word_character(text[start - 1]))
        --start;
    const std::string_view prefix = text.substr(start, offset - 1 - start);
    return prefix.empty() || prefix == "u8" || prefix == "u" || prefix == "U" || prefix == "L";
}

/// The offset behind the raw string whose quote is at `offset`: R"mark(...)mark".
static std::size_t behind_raw_string(std::string_view text, std::size_t offset) {
    const std::string_view head = text.substr(offset + 1, kLongestRawMark + 1);
    const std::size_t mark = head.find('(');
    if (mark == std::string_view::npos)
        return offset + 1;
    std::string end(1, ')');
    end.append(head.substr(0, mark)).append(1, '"');
    const std::size_t close = text.find(end, offset + 1 + mark);
    return close == std::string_view::npos ? text.size() : close + end.size();
}

std::size_t behind_literal(std::string_view text, std::size_t offset) {
    if (is_raw_string(text, offset))
        return behind_raw_string(text, offset);
    const char quote = text[offset];
    for (++offset; offset < text.size() && text[offset] != '\n'; ++offset) {
        if (text[offset] == quote)
            return offset + 1;
        if (text[offset] == '\\' && offset + 1 < text.size())
            offset += text.substr(offset, 3) == "\\\r\n" ? 2 : 1;
    }
    return offset;
}

std::size_t behind_blank(std::string_view text, std::size_t offset, bool* line_begin) {
    while (offset < text.size()) {
        const char c = text[offset];
        if (c == '\n') {
            *line_begin = true;
            ++offset;
        } else if (c == ' ' || c == '\t' || c == '\r' || c == '\f' || c == '\v') {
            ++offset;
        } else if (c != '/' || offset + 1 == text.size()) {
            break;
        } else if (text[offset + 1] == '/') {
            *line_begin = true;
            offset = behind_line(text, offset);
        } else if (text[offset + 1] == '*') {
            offset = behind_comment(text, offset);
        } else {
            break;
        }
    }
    return offset;
}
