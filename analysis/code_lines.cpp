#include "analysis/code_lines.h"

#include "common/code_lexer.h"

#include <algorithm>

constexpr std::uint32_t kNone = 0xffffffff; ///< no mark
constexpr std::uint32_t kOpen = 0xfffffffe; ///< a body that no brace closes

code_lines::code_lines(const source_analysis& analysis)
    : analysis_(analysis),
      needs_marks_(std::any_of(analysis.functions.begin(), analysis.functions.end(),
                               [](const source_function& function) { return !function.called; })) {
    first_code_.reserve(analysis.positions.lines());
    read_text();
    first_code_.resize(line_, 0);
    match_marks();
    find_bodies();
    find_extents();
}

/// Notes that code stands at text[from, to), which may hold newlines.
void code_lines::note_code(std::size_t from, std::size_t to) {
    const std::string_view text = analysis_.text;
    while (from < to) {
        if (first_code_.size() < line_) {
            first_code_.resize(line_, 0);
            first_code_[line_ - 1] = static_cast<std::uint32_t>(from - line_start_ + 1);
        }
        const std::size_t newline = text.substr(0, to).find('\n', from);
        if (newline == std::string_view::npos)
            return;
        ++line_;
        line_start_ = newline + 1;
        from = std::min(text.find_first_not_of(" \t\r\n", line_start_), to);
        for (std::size_t i = line_start_; i < from; ++i) { // blank lines inside a literal
            if (text[i] == '\n') {
                ++line_;
                line_start_ = i + 1;
            }
        }
    }
}

void code_lines::note_mark(std::size_t offset) {
    const char c = analysis_.text[offset];
    if (!marks_.empty() && marks_.back().next == '\0')
        marks_.back().next = c;
    if (c == '{' || c == '}' || c == '(' || c == ')' || c == ';')
        marks_.push_back({{line_, static_cast<std::uint32_t>(offset - line_start_ + 1)}, c, '\0', kNone});
}

void code_lines::read_text() {
    const std::string_view text = analysis_.text;
    bool line_begin = true;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t code = behind_no_code(text, at, &line_begin);
        for (; at < code; ++at) {
            if (text[at] == '\n') {
                ++line_;
                line_start_ = at + 1;
            }
        }
        if (code == text.size())
            return;
        line_begin = false;
        at = begins_literal(text, code) ? behind_literal(text, code) : code + 1;
        while (at < text.size() && is_word_character(text[at - 1]) && is_word_character(text[at]))
            ++at;
        if (needs_marks_)
            note_mark(code);
        note_code(code, at);
    }
}

/// Gives each opening mark the one that closes it.
void code_lines::match_marks() {
    std::vector<std::uint32_t> open;
    for (std::uint32_t i = 0; i < marks_.size(); ++i) {
        const char kind = marks_[i].kind;
        if (kind == '{' || kind == '(') {
            open.push_back(i);
        } else if (!open.empty() && marks_[open.back()].kind == (kind == '}'   ? '{'
                                                                 : kind == ')' ? '('
                                                                               : '?')) {
            marks_[open.back()].match = i;
            open.pop_back();
        }
    }
}

/// From each mark on: where the head of a function goes on there, its parameters are passed over, and so are
/// the initialisers in braces of a constructor's members; the next brace opens its body.
void code_lines::find_bodies() {
    bodies_.assign(marks_.size() + 1, kNone);
    for (std::size_t i = marks_.size(); i-- > 0;) {
        const mark& current = marks_[i];
        if (current.kind == '(' && current.match != kNone)
            bodies_[i] = bodies_[current.match + 1];
        else if (current.kind == ')')
            bodies_[i] = bodies_[i + 1];
        else if (current.kind == '{' && current.match == kNone)
            bodies_[i] = kOpen;
        else if (current.kind == '{' &&
                 (marks_[current.match].next == ',' || marks_[current.match].next == '{'))
            bodies_[i] = bodies_[current.match + 1];
        else if (current.kind == '{')
            bodies_[i] = current.match;
    }
}

/// What a function reaches that begins on `line` and was never called; the line alone when it has no body.
source_extent code_lines::uncalled_extent(std::uint32_t line) const {
    const auto first =
        std::lower_bound(marks_.begin(), marks_.end(), line,
                         [](const mark& m, std::uint32_t wanted) { return m.position.line < wanted; });
    const std::uint32_t body = bodies_[static_cast<std::size_t>(first - marks_.begin())];
    if (body == kOpen)
        return {{line, 1}, {analysis_.positions.lines(), 0}};
    return {{line, 1}, body == kNone ? source_position{line, 0xffffffff} : marks_[body].position};
}

void code_lines::find_extents() {
    for (const source_function& function : analysis_.functions) {
        if (function.called)
            functions_.push_back({function.first, function.last});
        else if (function.line > 0)
            functions_.push_back(uncalled_extent(static_cast<std::uint32_t>(function.line)));
    }
    std::sort(functions_.begin(), functions_.end());
    std::size_t kept = 0;
    for (const source_extent& extent : functions_) {
        if (kept != 0 && extent.start <= functions_[kept - 1].end)
            functions_[kept - 1].end = std::max(functions_[kept - 1].end, extent.end);
        else
            functions_[kept++] = extent;
    }
    functions_.resize(kept);
}

code_line code_lines::examine(std::uint32_t line) {
    while (next_ < functions_.size() && functions_[next_].end.line < line)
        ++next_;
    code_line result = {false, false, line <= first_code_.size() ? first_code_[line - 1] : 0};
    if (result.column == 0)
        return result;
    const source_position code = {line, result.column};
    for (std::size_t i = next_; i < functions_.size() && functions_[i].start.line <= line; ++i) {
        result.in_function = true;
        result.inside = result.inside || (functions_[i].start <= code && code <= functions_[i].end);
        if (functions_[i].end.line > line)
            break;
    }
    return result;
}
