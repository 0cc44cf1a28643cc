#include "site/syntax.h"

#include "common/code_lexer.h"

#include <algorithm>
#include <array>
#include <cstdint>

static constexpr std::string_view c_endings[] = {"c",   "h", "cc", "hh",  "cpp", "hpp", "cxx", "hxx", "c++",
                                                 "h++", "C", "H",  "inl", "ipp", "tcc", "tpp", "ixx", "cppm"};

bool is_c_source(std::string_view name) {
    const std::size_t dot = name.rfind('.');
    return dot != std::string_view::npos &&
           std::find(std::begin(c_endings), std::end(c_endings), name.substr(dot + 1)) != std::end(c_endings);
}

constexpr std::size_t kLongestKeyword = 16;

/// In the order of their first letters.
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

enum class byte_class : unsigned char { dull, word, lower, slash, quote };

/// Keywords are few: most words are told apart by their first letter and length.
struct lexer_tables {
    std::array<byte_class, 256> classes = {};
    std::array<bool, 256> words = {};
    std::array<std::uint32_t, 26> lengths = {}; ///< by first letter: a bit for each length
    std::array<std::uint8_t, 27> first = {};    ///< by first letter: index of its first keyword

    constexpr lexer_tables() {
        for (unsigned int c = 0; c < 256; ++c) {
            const bool lower = c >= 'a' && c <= 'z';
            const bool other = (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' || c >= 0x80;
            words[c] = lower || other;
            classes[c] = lower ? byte_class::lower : other ? byte_class::word : byte_class::dull;
        }
        classes['/'] = byte_class::slash;
        classes['"'] = classes['\''] = byte_class::quote;
        for (const std::string_view word : keywords) {
            lengths[letter_of(word)] |= 1U << word.size();
            for (std::size_t i = letter_of(word) + 1; i < first.size(); ++i)
                ++first[i];
        }
    }
};

} // namespace

static constexpr lexer_tables tables;

static byte_class class_of(char c) {
    return tables.classes[static_cast<unsigned char>(c)];
}

static bool is_keyword(std::string_view word) {
    const std::size_t letter = letter_of(word);
    if (word.size() > kLongestKeyword || (tables.lengths[letter] >> word.size() & 1) == 0)
        return false;
    const auto* const end = keywords + tables.first[letter + 1];
    return std::find(keywords + tables.first[letter], end, word) != end;
}

static std::size_t behind_word(std::string_view text, std::size_t at) {
    while (at < text.size() && tables.words[static_cast<unsigned char>(text[at])])
        ++at;
    return at;
}

syntax_token syntax_reader::next() {
    for (;;) {
        while (at_ < text_.size() && class_of(text_[at_]) == byte_class::dull)
            ++at_;
        if (at_ >= text_.size())
            return {text_.size(), text_.size(), syntax_kind::none};
        const byte_class kind = class_of(text_[at_]);
        const std::size_t begin = at_;
        if (kind == byte_class::word) {
            at_ = behind_word(text_, at_);
        } else if (kind == byte_class::lower) {
            at_ = behind_word(text_, at_);
            if (is_keyword(text_.substr(begin, at_ - begin)))
                return {begin, at_, syntax_kind::keyword};
        } else if (kind == byte_class::slash) {
            const char after = at_ + 1 < text_.size() ? text_[at_ + 1] : '\0';
            if (after == '*' || after == '/') {
                at_ = after == '*' ? behind_comment(text_, at_) : behind_line(text_, at_);
                return {begin, after == '/' && text_[at_ - 1] == '\n' ? at_ - 1 : at_, syntax_kind::comment};
            }
            ++at_;
        } else if (kind == byte_class::quote && begins_literal(text_, at_)) {
            at_ = behind_literal(text_, at_);
            return {begin, at_, syntax_kind::string};
        } else {
            ++at_;
        }
    }
}
