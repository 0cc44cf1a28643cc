#include "changes/diff_names.h"

#include <algorithm>

static bool is_octal(char c) {
    return c >= '0' && c <= '7';
}

/// The byte of an escape of one letter; 0 for one that is none.
static char escaped_byte(char letter) {
    static constexpr std::string_view letters = "abtnvfr\"\\";
    static constexpr std::string_view bytes = "\a\b\t\n\v\f\r\"\\";
    const std::size_t at = letters.find(letter);
    return at == std::string_view::npos ? '\0' : bytes[at];
}

/// Takes what follows a backslash.
static std::optional<char> take_escape(std::string_view* text) {
    if (text->size() >= 3 && is_octal((*text)[0]) && is_octal((*text)[1]) && is_octal((*text)[2])) {
        const int byte = ((*text)[0] - '0') * 64 + ((*text)[1] - '0') * 8 + ((*text)[2] - '0');
        text->remove_prefix(3);
        return byte == 0 || byte > 255 ? std::nullopt : std::optional(static_cast<char>(byte));
    }
    const char byte = text->empty() ? '\0' : escaped_byte(text->front());
    if (byte == '\0')
        return std::nullopt;
    text->remove_prefix(1);
    return byte;
}

std::optional<std::string> take_quoted_name(std::string_view* text) {
    if (!text->starts_with('"'))
        return std::nullopt;
    text->remove_prefix(1);
    std::string name;
    while (!text->empty()) {
        const char c = text->front();
        text->remove_prefix(1);
        if (c == '"')
            return name;
        if (c != '\\') {
            name += c;
            continue;
        }
        const std::optional<char> byte = take_escape(text);
        if (!byte)
            return std::nullopt;
        name += *byte;
    }
    return std::nullopt;
}

std::optional<std::string> header_name(std::string_view text) {
    if (text.starts_with('"'))
        return take_quoted_name(&text);
    const std::string_view name = text.substr(0, text.find('\t')); // git writes one behind a name with blanks
    return name == "/dev/null" ? std::string() : std::string(name);
}

/// Two names of which at least one is in quotes; empty when they are damaged.
static std::pair<std::string, std::string> quoted_names(std::string_view text) {
    std::optional<std::string> first;
    if (text.starts_with('"')) {
        first = take_quoted_name(&text);
    } else {
        const std::size_t blank = text.find(" \"");
        first = std::string(text.substr(0, blank));
        text.remove_prefix(blank);
    }
    if (!first || !text.starts_with(' '))
        return {};
    text.remove_prefix(1);
    if (!text.starts_with('"'))
        return {*first, std::string(text)};
    const std::optional<std::string> second = take_quoted_name(&text);
    return second && text.empty() ? std::pair(*first, *second) : std::pair<std::string, std::string>();
}

std::pair<std::string, std::string> both_names(std::string_view text) {
    if (text.starts_with('"') || (text.ends_with('"') && text.find(" \"") != std::string_view::npos))
        return quoted_names(text);
    std::size_t blank = text.size() / 2;
    if (text.size() % 2 == 0 || text[blank] != ' ')
        blank = std::count(text.begin(), text.end(), ' ') == 1 ? text.find(' ') : std::string_view::npos;
    if (blank == std::string_view::npos)
        return {};
    return {std::string(text.substr(0, blank)), std::string(text.substr(blank + 1))};
}

std::string without_prefixes(const std::string& old_name, const std::string& new_name) {
    if (old_name == new_name)
        return new_name;
    const auto [old_end, new_end] =
        std::mismatch(old_name.rbegin(), old_name.rend(), new_name.rbegin(), new_name.rend());
    const std::string_view common(new_end.base(), new_name.end());
    const bool whole =
        (old_end == old_name.rend() || *old_end == '/') && (new_end == new_name.rend() || *new_end == '/');
    const std::size_t slash = common.find('/');
    if (!whole && slash == std::string_view::npos)
        return new_name;
    const std::string_view rest = whole ? common : common.substr(slash + 1);
    return rest.empty() ? new_name : std::string(rest);
}

std::optional<std::string> without_folders(std::string_view name, int folders) {
    for (; folders > 0; --folders) {
        const std::size_t slash = name.find('/');
        if (slash == std::string_view::npos)
            return std::nullopt;
        name.remove_prefix(slash + 1);
    }
    if (name.empty())
        return std::nullopt;
    return std::string(name);
}
