#include "site/html_text.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <vector>

constexpr char32_t kReplacement = 0xfffd;
constexpr std::string_view kEllipsis = "\xe2\x80\xa6";

utf8_character read_utf8(std::string_view text, std::size_t offset) {
    const auto byte = [&](std::size_t i) {
        return offset + i < text.size() ? static_cast<unsigned char>(text[offset + i]) : 0U;
    };
    const unsigned int first = byte(0);
    if (first < 0x80)
        return {first, 1};
    const std::size_t length = first >= 0xf0 ? 4 : first >= 0xe0 ? 3 : 2;
    if (first < 0xc2 || first > 0xf4)
        return {kReplacement, 1};
    char32_t code = first & (0x7fU >> length);
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(i) & 0xc0) != 0x80)
            return {kReplacement, 1};
        code = code << 6 | (byte(i) & 0x3f);
    }
    static const char32_t smallest[] = {0, 0, 0x80, 0x800, 0x10000};
    const bool surrogate = code >= 0xd800 && code <= 0xdfff;
    if (code < smallest[length] || surrogate || code > 0x10ffff)
        return {kReplacement, 1};
    return {code, length};
}

/// Characters that change the order in which text is shown.
static bool turns_direction(char32_t code) {
    return code == 0x061c || code == 0x200e || code == 0x200f || (code >= 0x202a && code <= 0x202e) ||
           (code >= 0x2066 && code <= 0x2069);
}

/// Characters that HTML forbids: the controls behind ASCII, and those that are none.
static bool is_forbidden(char32_t code) {
    return (code >= 0x7f && code <= 0x9f) || (code >= 0xfdd0 && code <= 0xfdef) || (code & 0xfffe) == 0xfffe;
}

namespace {

/// What becomes of a byte of source text.
enum byte_kind : unsigned char { as_it_is, markup, control, beyond_ascii };

struct byte_kinds {
    std::array<byte_kind, 256> of = {};
    std::array<bool, 256> plain_in_name = {}; ///< also in quotes
    constexpr byte_kinds() {
        for (unsigned int i = 0; i < 256; ++i) {
            of[i] = is_plain_on_page(static_cast<char>(i)) ? as_it_is : i >= 0x80 ? beyond_ascii : control;
            plain_in_name[i] = of[i] == as_it_is && i >= ' ' && i != '"';
        }
        of['&'] = of['<'] = of['>'] = markup;
    }
};

} // namespace

static constexpr byte_kinds kinds;

static byte_kind kind_of(char c) {
    return kinds.of[static_cast<unsigned char>(c)];
}

static std::string_view escaped(char c) {
    switch (c) {
    case '&':
        return "&amp;";
    case '<':
        return "&lt;";
    case '>':
        return "&gt;";
    default:
        return "&quot;";
    }
}

/// The sign of U+2400 and on for a control character; a carriage return has to be written as a reference.
static void put_control(text_buffer& out, unsigned char c) {
    if (c == '\r')
        return out.put("&#13;");
    const unsigned int sign = c == 0x7f ? 0x21 : c;
    out.put("\xe2\x90");
    out.put(static_cast<char>(0x80 + sign));
}

static void put_direction(text_buffer& out, char32_t code, std::string_view bytes) {
    char number[8];
    std::snprintf(number, sizeof number, "%04X", static_cast<unsigned int>(code));
    out.put("<bdi data-u=");
    out.put(number);
    out.put(">");
    out.put(bytes);
    out.put("</bdi>");
}

/// Writes the character beyond ASCII at `offset` and returns its length.
static std::size_t put_beyond_ascii(text_buffer& out, std::string_view text, std::size_t offset) {
    const utf8_character character = read_utf8(text, offset);
    const std::string_view bytes = text.substr(offset, character.length);
    if (turns_direction(character.code))
        put_direction(out, character.code, bytes);
    else if (character.code == kReplacement || is_forbidden(character.code))
        out.put("\xef\xbf\xbd");
    else
        out.put(bytes);
    return character.length;
}

static std::size_t behind_plain(std::string_view text, std::size_t from) {
    const char* at = text.data() + from;
    const char* const end = text.data() + text.size();
    while (at != end && kind_of(*at) == as_it_is)
        ++at;
    return static_cast<std::size_t>(at - text.data());
}

void put_code(text_buffer& out, std::string_view text) {
    std::size_t written = 0;
    std::size_t at = 0;
    for (;;) {
        at = behind_plain(text, at);
        if (at == text.size())
            break;
        const char c = text[at];
        const byte_kind kind = kind_of(c);
        if (at > written)
            out.put(text.substr(written, at - written));
        if (kind == beyond_ascii) {
            at += put_beyond_ascii(out, text, at);
        } else {
            if (kind == markup)
                out.put(escaped(c));
            else
                put_control(out, static_cast<unsigned char>(c));
            ++at;
        }
        written = at;
    }
    if (at > written)
        out.put(text.substr(written));
}

/// Appends what a character of a name is shown as.
static void append_shown(std::string& shown, std::string_view name, std::size_t offset,
                         const utf8_character& character) {
    const char32_t code = character.code;
    if (code == '&' || code == '<' || code == '>' || code == '"') {
        shown += escaped(name[offset]);
    } else if (code < 0x20 || is_forbidden(code) || turns_direction(code)) {
        char number[16];
        std::snprintf(number, sizeof number, code < 0x100 ? "\\x%02x" : "\\u%04x",
                      static_cast<unsigned int>(code));
        shown += number;
    } else if (code == kReplacement) {
        shown += "\xef\xbf\xbd";
    } else {
        shown += name.substr(offset, character.length);
    }
}

/// True for names that are shown as they are.
static bool is_plain_name(std::string_view name) {
    return std::all_of(name.begin(), name.end(),
                       [](char c) { return kinds.plain_in_name[static_cast<unsigned char>(c)]; });
}

/// `ends`, if it is given, receives the size behind each character.
static std::string shown_name(std::string_view name, std::vector<std::size_t>* ends) {
    std::string shown;
    shown.reserve(name.size() + name.size() / 8);
    for (std::size_t at = 0; at < name.size();) {
        const char c = name[at];
        if (kinds.plain_in_name[static_cast<unsigned char>(c)] && !ends) {
            shown += c;
            ++at;
            continue;
        }
        const utf8_character character = read_utf8(name, at);
        append_shown(shown, name, at, character);
        at += character.length;
        if (ends)
            ends->push_back(shown.size());
    }
    return shown;
}

std::string html_name(std::string_view name, std::size_t limit, name_cut cut) {
    if (name.size() <= limit) {
        if (is_plain_name(name))
            return std::string(name);
        std::string shown = shown_name(name, nullptr);
        if (shown.size() <= limit)
            return shown;
    }
    // Of a very long name only the part that may be shown is looked at, so that all names together cost no
    // more than their lengths.
    const bool from_back = cut == name_cut::front;
    const std::size_t looked_at = std::min(name.size(), limit + 4);
    const std::string_view part =
        from_back ? name.substr(name.size() - looked_at) : name.substr(0, looked_at);
    std::vector<std::size_t> ends = {0};
    const std::string shown = shown_name(part, &ends);
    if (from_back)
        return std::string(kEllipsis) +
               shown.substr(
                   *std::lower_bound(ends.begin(), ends.end(), shown.size() - std::min(limit, shown.size())));
    return shown.substr(0, *(std::upper_bound(ends.begin(), ends.end(), limit) - 1)) + std::string(kEllipsis);
}

void put_name(text_buffer& out, std::string_view name, std::size_t limit, name_cut cut) {
    if (name.size() <= limit && is_plain_name(name))
        out.put(name);
    else
        out.put(html_name(name, limit, cut));
}

void put_grouped(text_buffer& out, std::uint64_t value) {
    if (value >= 1000) {
        put_grouped(out, value / 1000);
        const auto rest = static_cast<unsigned int>(value % 1000);
        char* const to = out.room(4);
        to[0] = ',';
        to[1] = static_cast<char>('0' + rest / 100);
        to[2] = static_cast<char>('0' + rest / 10 % 10);
        to[3] = static_cast<char>('0' + rest % 10);
        return out.taken(to + 4);
    }
    out.put_number(value);
}
