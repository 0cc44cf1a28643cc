// The pieces of C and C++ source text that matter for telling code from what is none. All take and give
// offsets into a text; none reads beyond its end.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>

/// For each byte whether it is a letter, digit or underscore.
inline constexpr std::array<bool, 256> kWordCharacters = [] {
    std::array<bool, 256> words = {};
    for (const char c : std::string_view("_0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz"))
        words[static_cast<unsigned char>(c)] = true;
    return words;
}();

/// Letters, digits and the underscore.
constexpr bool is_word_character(char c) {
    return kWordCharacters[static_cast<unsigned char>(c)];
}

/// The offset behind the line that `offset` lies in, and behind those that it continues with a backslash.
std::size_t behind_line(std::string_view text, std::size_t offset);

/// The offset behind the block comment that begins at `offset`; the end of the text for one that is not
/// closed.
std::size_t behind_comment(std::string_view text, std::size_t offset);

/// True when a string or character literal begins at `offset`, which is at its quote.
bool begins_literal(std::string_view text, std::size_t offset);

/// The offset behind the literal whose quote is at `offset`: at most the end of its line, except for a raw
/// string.
std::size_t behind_literal(std::string_view text, std::size_t offset);

/// The offset behind the preprocessor directive whose "#" is at `offset`: behind its last line, or further
/// where a comment that begins on it goes on.
std::size_t behind_directive(std::string_view text, std::size_t offset);

/// The offset behind the blanks, newlines and comments from `offset` on. `*line_begin`: whether only such lie
/// in front of `offset` on its line; kept up to date.
std::size_t behind_blank(std::string_view text, std::size_t offset, bool* line_begin);
