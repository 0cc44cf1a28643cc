// What the walk over a mangled name puts into its outline.

#include "demangle/mangled_name_reader.h"

#include <cstring>
#include <string_view>
#include <utility>

static constexpr std::pair<const char*, const char*> kOperatorTexts[] = {
    {"nw", "_new"}, {"na", "_new[]"}, {"dl", "_delete"}, {"da", "_delete[]"}, {"aw", "_co_await"},
    {"li", "\"\""}, {"ps", "+"},      {"pl", "+"},       {"ng", "-"},         {"mi", "-"},
    {"ad", "&"},    {"an", "&"},      {"de", "*"},       {"ml", "*"},         {"co", "~"},
    {"dv", "/"},    {"rm", "%"},      {"or", "|"},       {"eo", "^"},         {"aS", "="},
    {"pL", "+="},   {"mI", "-="},     {"mL", "*="},      {"dV", "/="},        {"rM", "%="},
    {"aN", "&="},   {"oR", "|="},     {"eO", "^="},      {"ls", "<<"},        {"rs", ">>"},
    {"lS", "<<="},  {"rS", ">>="},    {"eq", "=="},      {"ne", "!="},        {"lt", "<"},
    {"gt", ">"},    {"le", "<="},     {"ge", ">="},      {"ss", "<=>"},       {"nt", "!"},
    {"aa", "&&"},   {"oo", "||"},     {"pp", "++"},      {"mm", "--"},        {"cm", ","},
    {"pm", "->*"},  {"pt", "->"},     {"cl", "()"},      {"ix", "[]"},
};

/// The templates that "St" and the like before a name stand for.
static constexpr std::pair<char, const char*> kStdTexts[] = {
    {'t', "std"},           {'a', "allocator"},     {'b', "basic_string"},   {'s', "basic_string"},
    {'i', "basic_istream"}, {'o', "basic_ostream"}, {'d', "basic_iostream"},
};

void MangledNameReader::show_class(std::string_view text) {
    if (!is_shown())
        return;
    last_shown_ = outline_->text.size();
    last_shown_size_ = text.size();
    outline_->text += text;
}

/// clang numbers the closures and unnamed types of a translation unit.
void MangledNameReader::show_source_name(std::string_view text) {
    const char* const behind = text.data() + text.size();
    if (text.starts_with("_GLOBAL__N_"))
        show_class("{anonymous}");
    else if (!text.starts_with("$_"))
        show_class(text);
    else
        show_class(behind[0] == 'c' && (behind[1] == 'l' || behind[1] == 'v') ? "{lambda}" : "{unnamed}");
}

void MangledNameReader::show_operator(const char* code) {
    if (!is_shown())
        return;
    show("operator");
    for (const auto& [known, text] : kOperatorTexts) {
        if (known[0] == code[0] && known[1] == code[1])
            return show(text);
    }
    fail(); // of expressions only
}

/// The place in the name is at the variant. No class has its name repeated twice, so that the text stays
/// linear in the name.
void MangledNameReader::show_constructor(bool is_constructor) {
    if (!is_shown())
        return;
    if (last_shown_size_ == 0) {
        fail();
        return;
    }
    outline_->variant = static_cast<std::size_t>(at_ - text_);
    show(is_constructor ? "" : "~");
    outline_->text.append(outline_->text, last_shown_, last_shown_size_);
    last_shown_size_ = 0;
}

void MangledNameReader::show_std(char code) {
    if (!is_shown())
        return;
    show(code == 't' ? "" : "std::");
    for (const auto& [known, text] : kStdTexts) {
        if (known == code)
            show_class(text);
    }
    if (std::strchr("siod", code)) {
        show("<>");
        outline_->is_template = true;
    }
}
