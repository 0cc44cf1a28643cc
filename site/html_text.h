// Text of the input on a page. Whatever it holds, it stays text, the page stays well-formed UTF-8, and it is
// read from left to right as it stands in the file.
#pragma once

#include "common/text_buffer.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

/// One character of UTF-8.
struct utf8_character {
    char32_t code;      ///< U+FFFD for a byte that begins no character
    std::size_t length; ///< bytes, at least 1
};

/// The character at `offset`, which lies in the text.
utf8_character read_utf8(std::string_view text, std::size_t offset);

/// True for characters that a page may hold as they stand, also as part of a longer text.
constexpr bool is_plain_on_page(char c) {
    const bool printable = c >= ' ' && c < 0x7f && c != '&' && c != '<' && c != '>';
    return printable || c == '\t' || c == '\n' || c == '\f';
}

/// Writes source text: markup is escaped, so that a copy of the page's text is the source. What no page may
/// hold is replaced by a sign for it: control characters, bytes that are no UTF-8. Characters that would turn
/// the reading direction stay, each isolated in an element that shows its number.
void put_code(text_buffer& out, std::string_view text);

/// Which end of a name is cut off when it is too long.
enum class name_cut { front, back };

constexpr std::size_t kLongestName = 400; ///< bytes of a name on a page that is about it

/// A name, for text and for attributes in double quotes: at most about `limit` bytes of HTML, with an
/// ellipsis in place of the rest. Control and direction characters are shown as their numbers.
std::string html_name(std::string_view name, std::size_t limit = kLongestName, name_cut cut = name_cut::back);

/// Writes the same.
void put_name(text_buffer& out, std::string_view name, std::size_t limit = kLongestName,
              name_cut cut = name_cut::back);

/// A number with "," every three digits.
void put_grouped(text_buffer& out, std::uint64_t value);
