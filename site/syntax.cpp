#include "site/syntax.h"

#include "common/code_lexer.h"
#include "site/html_text.h"

#include <algorithm>
#include <cstdint>
#include <iterator>

static constexpr std::string_view c_endings[] = {"c",   "h", "cc", "hh",  "cpp", "hpp", "cxx", "hxx", "c++",
                                                 "h++", "C", "H",  "inl", "ipp", "tcc", "tpp", "ixx", "cppm"};

bool is_c_source(std::string_view name) {
    const std::size_t dot = name.rfind('.');
    return dot != std::string_view::npos &&
           std::find(std::begin(c_endings), std::end(c_endings), name.substr(dot + 1)) != std::end(c_endings);
}

static constexpr std::string_view keywords[] = {"alignas",
                                                "alignof",
                                                "auto",
                                                "bool",
                                                "break",
                                                "case",
                                                "catch",
                                                "char",
                                                "char16_t",
                                                "char32_t",
                                                "char8_t",
                                                "class",
                                                "co_await",
                                                "co_return",
                                                "co_yield",
                                                "concept",
                                                "const",
                                                "consteval",
                                                "constexpr",
                                                "constinit",
                                                "const_cast",
                                                "continue",
                                                "decltype",
                                                "default",
                                                "delete",
                                                "do",
                                                "double",
                                                "dynamic_cast",
                                                "else",
                                                "enum",
                                                "explicit",
                                                "export",
                                                "extern",
                                                "false",
                                                "float",
                                                "for",
                                                "friend",
                                                "goto",
                                                "if",
                                                "inline",
                                                "int",
                                                "long",
                                                "mutable",
                                                "namespace",
                                                "new",
                                                "noexcept",
                                                "nullptr",
                                                "operator",
                                                "private",
                                                "protected",
                                                "public",
                                                "register",
                                                "reinterpret_cast",
                                                "requires",
                                                "restrict",
                                                "return",
                                                "short",
                                                "signed",
                                                "sizeof",
                                                "static",
                                                "static_assert",
                                                "static_cast",
                                                "struct",
                                                "switch",
                                                "template",
                                                "this",
                                                "thread_local",
                                                "throw",
                                                "true",
                                                "try",
                                                "typedef",
                                                "typeid",
                                                "typename",
                                                "union",
                                                "unsigned",
                                                "using",
                                                "virtual",
                                                "void",
                                                "volatile",
                                                "wchar_t",
                                                "while"};

static constexpr std::size_t letter_of(std::string_view word) {
    return static_cast<std::size_t>(word[0] - 'a');
}

namespace {

/// What may begin at a byte. Of `markup` are those that no page may hold as they stand.
enum class byte_class : unsigned char { dull, word, lower, slash, quote, markup, beyond_word };

constexpr std::size_t kSlots = 256; ///< of the table in which keywords are found

/// Where a word of two letters or more is looked for first.
constexpr std::size_t slot_of(std::string_view word) {
    const auto letter = [&](std::size_t i) { return static_cast<std::size_t>(word[i]); };
    return (letter(0) + 32 * letter(1) + 2 * letter(word.size() - 1) + word.size()) % kSlots;
}

struct lexer_tables {
    byte_class classes[256] = {};
    bool words[256] = {};
    std::uint32_t second[26] =
        {}; ///< by first letter: a bit for each second letter, which may be of others, too
    std::string_view slots[kSlots + std::size(keywords)] = {}; ///< keywords, from their slots on

    constexpr lexer_tables() {
        for (unsigned int c = 0; c < 256; ++c) {
            const char byte = static_cast<char>(c);
            const bool lower = c >= 'a' && c <= 'z';
            words[c] = is_word_character(byte);
            classes[c] = c >= 0x80                ? byte_class::beyond_word
                         : lower                  ? byte_class::lower
                         : words[c]               ? byte_class::word
                         : is_plain_on_page(byte) ? byte_class::dull
                                                  : byte_class::markup;
        }
        classes[int{'/'}] = byte_class::slash;
        classes[int{'"'}] = classes[int{'\''}] = byte_class::quote;
        for (const std::string_view word : keywords) {
            second[letter_of(word)] |= 1U << (word[1] & 31);
            std::size_t slot = slot_of(word);
            while (!slots[slot].empty())
                ++slot;
            slots[slot] = word;
        }
    }
};

} // namespace

static constexpr lexer_tables tables;

static byte_class class_of(char c) {
    return tables.classes[static_cast<unsigned char>(c)];
}

static bool is_in_word(char c) {
    return tables.words[static_cast<unsigned char>(c)];
}

static bool is_keyword(std::string_view word) {
    if (word.size() < 2)
        return false;
    std::size_t slot = slot_of(word);
    while (!tables.slots[slot].empty() && tables.slots[slot] != word)
        ++slot;
    return !tables.slots[slot].empty();
}

/// True when a keyword begins with the letter at `at` and the one behind it.
static bool begins_keyword(const char* at, const char* end) {
    return end - at > 1 && (tables.second[*at - 'a'] >> (static_cast<unsigned char>(at[1]) & 31) & 1) != 0;
}

/// Behind a word with characters beyond ASCII.
static std::size_t behind_foreign_word(std::string_view text, std::size_t at) {
    while (at < text.size() && (is_in_word(text[at]) || class_of(text[at]) == byte_class::beyond_word))
        ++at;
    return at;
}

static std::size_t behind_markup(std::string_view text, std::size_t at) {
    while (at < text.size() && class_of(text[at]) == byte_class::markup)
        ++at;
    return at;
}

/// The comment that begins at the slash; of kind none for a slash alone.
void syntax_reader::take_comment() {
    const std::size_t begin = token_.begin;
    const char after = begin + 1 < text_.size() ? text_[begin + 1] : '\0';
    if (after == '*') {
        token_.end = behind_comment(text_, begin);
        token_.kind = syntax_kind::comment;
    } else if (after == '/') {
        const std::size_t end = behind_line(text_, begin);
        token_.end = text_[end - 1] == '\n' ? end - 1 : end;
        token_.kind = syntax_kind::comment;
    }
}

/// What begins at a byte that is neither dull nor of a word; of kind none when nothing does.
void syntax_reader::take_piece() {
    switch (class_of(text_[token_.begin])) {
    case byte_class::slash:
        return take_comment();
    case byte_class::quote:
        if (!begins_literal(text_, token_.begin))
            return;
        token_.end = behind_literal(text_, token_.begin);
        token_.kind = syntax_kind::string;
        return;
    case byte_class::beyond_word:
        token_.end = behind_foreign_word(text_, token_.begin);
        break;
    default:
        token_.end = behind_markup(text_, token_.begin);
    }
    token_.kind = syntax_kind::sign;
}

/// The word that begins here; of kind none when it is no keyword.
void syntax_reader::take_word() {
    const char* const end = text_.data() + text_.size();
    const char* const begin = text_.data() + token_.begin;
    const char* behind = begin + 1;
    while (behind != end && is_in_word(*behind))
        ++behind;
    token_.end = static_cast<std::size_t>(behind - text_.data());
    const bool goes_on = behind != end && class_of(*behind) == byte_class::beyond_word;
    if (!goes_on && is_keyword({begin, behind}))
        token_.kind = syntax_kind::keyword;
}

/// The first place from `at` on where something other than words and dull bytes stands, or where a word
/// begins that may be a keyword. `at` is not within a word. Most of a text is passed over here: in one loop,
/// in which little depends on what a byte is.
static const char* behind_dull(const char* at, const char* end) {
    constexpr unsigned int begins_word = static_cast<unsigned int>(byte_class::lower);
    unsigned int before = static_cast<unsigned int>(byte_class::dull);
    for (; at != end; ++at) {
        const unsigned int kind = static_cast<unsigned int>(class_of(*at));
        if (kind > begins_word || (kind - before == begins_word && begins_keyword(at, end)))
            break;
        before = kind;
    }
    return at;
}

const syntax_token& syntax_reader::next() {
    token_.kind = syntax_kind::none;
    while (token_.kind == syntax_kind::none) {
        const char* const end = text_.data() + text_.size();
        const char* const at = behind_dull(text_.data() + token_.end, end);
        token_.begin = static_cast<std::size_t>(at - text_.data());
        token_.end = token_.begin;
        if (at == end)
            break;
        ++token_.end;
        if (class_of(*at) == byte_class::lower)
            take_word();
        else
            take_piece();
    }
    return token_;
}
