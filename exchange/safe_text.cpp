#include "exchange/safe_text.h"

#include "common/printable.h"

#include <algorithm>
#include <array>
#include <cstdint>

static constexpr std::string_view kReplacement = "\xef\xbf\xbd"; // U+FFFD

/// Length of the character that begins at text[at], a byte above 0x7f; 0 when it is no character.
static std::size_t length_of_character(std::string_view text, std::size_t at) {
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned int first = byte(at);
    const std::size_t length = first >= 0xf0 ? 4 : first >= 0xe0 ? 3 : 2;
    if (first < 0xc2 || first > 0xf4 || text.size() - at < length)
        return 0;
    std::uint32_t code = first & (0xffU >> (length + 1));
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(at + i) & 0xc0) != 0x80)
            return 0;
        code = code << 6 | (byte(at + i) & 0x3f);
    }
    static constexpr std::array<std::uint32_t, 5> kLowest = {0, 0, 0x80, 0x800, 0x10000};
    const bool is_surrogate = code >= 0xd800 && code <= 0xdfff;
    const bool is_none = (code & 0xfffe) == 0xfffe; // of XML and of Unicode
    return code < kLowest[length] || code > 0x10ffff || is_surrogate || is_none ? 0 : length;
}

/// Hands the text over in pieces; `escape(c)` gives what stands for an ASCII character, nothing for itself.
template <typename Put, typename Escape>
static void put_pieces(std::string_view text, Put put, Escape escape) {
    for (std::size_t at = 0; at < text.size();) {
        const unsigned char c = static_cast<unsigned char>(text[at]);
        const std::size_t length = c < 0x80 ? 1 : length_of_character(text, at);
        const std::string_view other = c < 0x80 ? escape(text[at]) : std::string_view();
        if (length == 0)
            put(kReplacement);
        else
            put(other.empty() ? text.substr(at, length) : other);
        at += std::max<std::size_t>(length, 1);
    }
}

static bool is_control(char c) {
    return (static_cast<unsigned char>(c) < 0x20) || c == 0x7f;
}

static std::string_view xml_escape(char c) {
    switch (c) {
    case '&':
        return "&amp;";
    case '<':
        return "&lt;";
    case '>':
        return "&gt;";
    case '"':
        return "&quot;";
    case '\t':
        return "&#9;";
    case '\n':
        return "&#10;";
    case '\r':
        return "&#13;";
    default:
        return static_cast<unsigned char>(c) < 0x20 ? kReplacement : std::string_view();
    }
}

void put_xml(text_buffer& out, std::string_view text) {
    put_pieces(
        text, [&](std::string_view piece) { out.put(piece); }, xml_escape);
}

void put_json(text_buffer& out, std::string_view text) {
    static const char digits[] = "0123456789abcdef";
    char code[] = "\\u0000";
    out.put('"');
    put_pieces(
        text, [&](std::string_view piece) { out.put(piece); },
        [&code](char c) -> std::string_view {
            if (c == '"')
                return "\\\"";
            if (c == '\\')
                return "\\\\";
            if (!is_control(c))
                return {};
            code[4] = digits[c >> 4];
            code[5] = digits[c & 15];
            return code;
        });
    out.put('"');
}

template <typename Escape> static std::string escaped_text(std::string_view text, Escape escape) {
    std::string result;
    put_pieces(
        text, [&](std::string_view piece) { result += piece; }, escape);
    return result;
}

std::string markdown_text(std::string_view text) {
    static constexpr std::string_view kMarkup = "\\`*_[]|<>&~#!";
    char pair[] = "\\?";
    return escaped_text(text, [&pair](char c) -> std::string_view {
        if (is_control(c))
            return kReplacement;
        pair[1] = c;
        return kMarkup.find(c) == std::string_view::npos ? std::string_view() : pair;
    });
}

static std::string_view command_escape(char c) {
    switch (c) {
    case '%':
        return "%25";
    case '\r':
        return "%0D";
    case '\n':
        return "%0A";
    default:
        return is_control(c) ? kReplacement : std::string_view();
    }
}

std::string command_message(std::string_view text) {
    return escaped_text(text, command_escape);
}

std::string command_property(std::string_view text) {
    return escaped_text(text, [](char c) -> std::string_view {
        return c == ':' ? "%3A" : c == ',' ? "%2C" : command_escape(c);
    });
}

std::string log_text(std::string_view text) {
    static constexpr std::string_view kBracket = "##[";
    std::string result = printable(text);
    const std::size_t start = result.find_first_not_of(' ');
    if (start != std::string::npos && result.compare(start, 2, "::") == 0)
        result.replace(start, 1, "\\x3a");
    for (std::size_t at = result.find(kBracket); at != std::string::npos; at = result.find(kBracket, at))
        result.replace(at, 1, "\\x23");
    return result;
}

void put_line_text(text_buffer& out, std::string_view text, char separator) {
    for (const char c : text)
        out.put(is_control(c) || (separator != '\0' && c == separator) ? '?' : c);
}

std::size_t character_count(std::string_view text) {
    return static_cast<std::size_t>(
        std::count_if(text.begin(), text.end(), [](char c) { return (c & 0xc0) != 0x80; }));
}
