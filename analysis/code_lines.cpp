#include "analysis/code_lines.h"

#include "common/code_lexer.h"

#include <algorithm>
#include <string_view>
#include <utility>

constexpr std::uint32_t kOpen = 0xfffffffe; ///< a body that no brace closes

namespace {

/// A set of characters.
struct character_set {
    bool has[256] = {};
    explicit constexpr character_set(std::string_view characters) {
        for (const char c : characters)
            has[static_cast<unsigned char>(c)] = true;
    }
    bool contains(char c) const { return has[static_cast<unsigned char>(c)]; }
};

} // namespace

constexpr character_set kMarks("{}();");
constexpr character_set kStops("\n\"'/{}();");  ///< at which the reading of a line of code has to stop
constexpr character_set kBehindBrace("})];,");  ///< what a line that closes may hold behind its brace
constexpr character_set kWordStarts("bcdegrt"); ///< first letters of the words of word_at

code_lines::code_lines(const source_analysis& analysis) : analysis_(analysis) {
    starts_.resize(analysis.positions.lines());
    read_text();
    // Where a body ends matters only for functions that were never called.
    if (!std::all_of(analysis.functions.begin(), analysis.functions.end(),
                     [](const source_function& function) { return function.called; })) {
        match_marks();
        find_bodies();
    }
    find_extents();
}

source_position code_lines::position_of(std::size_t offset) const {
    return {line_, static_cast<std::uint32_t>(offset - line_start_ + 1)};
}

/// True when another piece of code on the line at hand tells nothing new.
bool code_lines::is_noted() const {
    return !mark_waits_ && line_ <= starts_.size() && starts_[line_ - 1].first_code != 0 &&
           !starts_[line_ - 1].closes;
}

/// Notes that a piece of code begins at `offset` of the line at hand.
void code_lines::note_code(std::size_t offset) {
    const char c = analysis_.text[offset];
    if (starts_.size() < line_)
        starts_.resize(line_);
    line_start& start = starts_[line_ - 1];
    if (start.first_code == 0)
        start = {position_of(offset).column, c == '}'};
    else if (!kBehindBrace.contains(c))
        start.closes = false;
    if (mark_waits_ && other_branches_ == 0)
        finish_mark(offset);
}

/// Notes a literal, text[from, to), which may hold newlines.
void code_lines::note_literal(std::size_t from, std::size_t to) {
    const std::string_view text = analysis_.text;
    while (from < to) {
        note_code(from);
        const std::size_t newline = text.substr(0, to).find('\n', from);
        if (newline == std::string_view::npos)
            return;
        from = std::min(text.find_first_not_of(" \t\r\f\v\n", newline + 1), to);
        pass_lines(newline, from);
    }
}

/// The word at `offset`.
static code_word word_at(std::string_view text, std::size_t offset) {
    static constexpr std::pair<std::string_view, code_word> words[] = {
        {"else", code_word::branch_else}, {"case", code_word::label},    {"default", code_word::label},
        {"break", code_word::jump},       {"continue", code_word::jump}, {"goto", code_word::jump},
        {"return", code_word::jump},      {"throw", code_word::jump}};
    if (!kWordStarts.contains(text[offset]))
        return code_word::other;
    for (const auto& [word, meaning] : words) {
        const std::size_t end = offset + word.size();
        if (text[offset] == word[0] && text.substr(offset, word.size()) == word &&
            (end == text.size() || !is_word_character(text[end])))
            return meaning;
    }
    return code_word::other;
}

/// True when the last character in front of `offset` other than blanks is a colon.
static bool is_behind_colon(std::string_view text, std::size_t offset) {
    while (offset > 0 && (text[offset - 1] == ' ' || text[offset - 1] == '\t' || text[offset - 1] == '\r' ||
                          text[offset - 1] == '\n'))
        --offset;
    return offset > 0 && text[offset - 1] == ':';
}

/// The last mark meets the code behind it.
void code_lines::finish_mark(std::size_t offset) {
    marks_.back().next = analysis_.text[offset];
    marks_.back().next_position = position_of(offset);
    marks_.back().before = word_at(analysis_.text, offset);
    mark_waits_ = false;
}

void code_lines::note_mark(std::size_t offset) {
    const char c = analysis_.text[offset];
    const bool behind_label = c == '{' && is_behind_colon(analysis_.text, offset);
    code_mark& mark = marks_.emplace_back(); // filled in place: there are many
    mark.position = position_of(offset);
    mark.match = kNone;
    mark.kind = c;
    mark.behind_label = behind_label;
    mark_waits_ = c != '(';
}

/// Counts the lines that end in text[from, to).
void code_lines::pass_lines(std::size_t from, std::size_t to) {
    const std::string_view text = analysis_.text.substr(0, to);
    for (from = text.find('\n', from); from != std::string_view::npos; from = text.find('\n', from + 1)) {
        ++line_;
        line_start_ = from + 1;
    }
}

/// Passes over blanks, newlines and comments. `*line_begin`: whether only such lie in front of `offset` on
/// its line; kept up to date.
std::size_t code_lines::pass_blank(std::size_t offset, bool* line_begin) {
    const char* const text = analysis_.text.data();
    const std::size_t size = analysis_.text.size();
    for (; offset < size; ++offset) {
        const char c = text[offset];
        if (c == '\n') {
            *line_begin = true;
            ++line_;
            line_start_ = offset + 1;
        } else if (c != ' ' && c != '\t' && c != '\r' && c != '\f' && c != '\v') {
            return offset;
        }
    }
    return offset;
}

/// The braces of both branches of a condition would not match: those of the first one count.
void code_lines::note_directive(std::size_t offset) {
    const std::string_view text = analysis_.text;
    const std::size_t begin = std::min(text.find_first_not_of(" \t", offset + 1), text.size());
    const std::string_view word = text.substr(begin, 4);
    if (word.starts_with("if")) {
        branches_.push_back(false);
    } else if ((word == "else" || word == "elif") && !branches_.empty()) {
        other_branches_ += branches_.back() ? 0 : 1;
        branches_.back() = true;
    } else if (word == "endi" && !branches_.empty()) {
        other_branches_ -= branches_.back() ? 1 : 0;
        branches_.pop_back();
    }
}

/// Reads code that begins at `offset`; gives where it stopped.
std::size_t code_lines::read_code(std::size_t offset) {
    const std::string_view text = analysis_.text;
    const char c = text[offset];
    if ((c == '"' || c == '\'') && begins_literal(text, offset)) {
        const std::size_t end = behind_literal(text, offset);
        note_literal(offset, end);
        return end;
    }
    if (!is_noted())
        note_code(offset);
    if (kMarks.contains(c) && other_branches_ == 0)
        note_mark(offset);
    ++offset;
    if (mark_waits_ || starts_[line_ - 1].closes) // what follows is to be looked at
        return offset;
    const char* at = text.data() + offset;
    while (at != text.data() + text.size() && !kStops.contains(*at))
        ++at;
    return static_cast<std::size_t>(at - text.data());
}

void code_lines::read_text() {
    const std::string_view text = analysis_.text;
    bool line_begin = true;
    for (std::size_t at = text.starts_with("\xef\xbb\xbf") ? 3 : 0; at < text.size();) {
        std::size_t code = pass_blank(at, &line_begin);
        if (code < text.size() && text[code] == '/') { // mostly a comment
            at = code;
            code = behind_blank(text, at, &line_begin);
            pass_lines(at, code);
        }
        if (code == text.size())
            return;
        if (text[code] == '#' && line_begin) {
            note_directive(code);
            at = behind_directive(text, code);
            pass_lines(code, at);
            continue;
        }
        line_begin = false;
        at = read_code(code);
    }
}

/// Gives each opening mark the one that closes it. A brace closes what is open inside it, too.
void code_lines::match_marks() {
    std::vector<std::uint32_t> parentheses;
    std::vector<std::pair<std::uint32_t, std::size_t>> braces; ///< with the parentheses open around each
    for (std::uint32_t i = 0; i < marks_.size(); ++i) {
        const std::size_t around = braces.empty() ? 0 : braces.back().second;
        if (marks_[i].kind == '{') {
            braces.emplace_back(i, parentheses.size());
        } else if (marks_[i].kind == '(') {
            parentheses.push_back(i);
        } else if (marks_[i].kind == ')' && parentheses.size() > around) {
            marks_[parentheses.back()].match = i;
            parentheses.pop_back();
        } else if (marks_[i].kind == '}' && !braces.empty()) {
            marks_[braces.back().first].match = i;
            parentheses.resize(around);
            braces.pop_back();
        }
    }
}

/// Whether the head of a function can go on behind the parenthesis at `close`: a semicolon comes next only
/// where a word in front of it begins to declare the parameters.
bool code_lines::declares_behind(std::size_t close) const {
    const std::size_t next = close + 1;
    return next == marks_.size() || marks_[next].kind != ';' || is_word_character(marks_[close].next);
}

/// From each mark on: where the head of a function goes on there, its parameters are passed over, and so are
/// the initialisers in braces of a constructor's members; the next brace opens its body.
void code_lines::find_bodies() {
    bodies_.assign(marks_.size() + 1, kNone);
    for (std::size_t i = marks_.size(); i-- > 0;) {
        const code_mark& current = marks_[i];
        if (current.kind == ';') { // declarations of parameters
            const bool another = i + 1 < marks_.size() && marks_[i + 1].kind == ';';
            bodies_[i] = another || current.next == '{' ? bodies_[i + 1] : kNone;
        } else if (current.kind == ')') {
            bodies_[i] = bodies_[i + 1];
        } else if (current.kind == '{' && current.match == kNone) {
            bodies_[i] = kOpen;
        } else if ((current.kind == '{' || current.kind == '(') && current.match != kNone) {
            const char next = marks_[current.match].next;
            const bool head_goes_on = current.kind == '(' || next == ',' || next == '{';
            bodies_[i] = !head_goes_on                    ? current.match
                         : declares_behind(current.match) ? bodies_[current.match + 1]
                                                          : kNone;
        }
    }
}

/// What a function reaches that begins on `line` and was never called; the line alone when it has no body. A
/// body without end reaches to `next_line`, where the next function begins, or to the end of the text for 0.
source_extent code_lines::uncalled_extent(std::uint32_t line, std::uint32_t next_line) const {
    const auto first =
        std::lower_bound(marks_.begin(), marks_.end(), line,
                         [](const code_mark& m, std::uint32_t wanted) { return m.position.line < wanted; });
    const std::uint32_t body = bodies_[static_cast<std::size_t>(first - marks_.begin())];
    if (body == kOpen)
        return {{line, 1}, {next_line != 0 ? next_line : analysis_.positions.lines(), 0}};
    return {{line, 1}, body == kNone ? source_position{line, 0xffffffff} : marks_[body].position};
}

void code_lines::extent_list::join() {
    std::sort(extents.begin(), extents.end());
    std::size_t kept = 0;
    for (const source_extent& extent : extents) {
        if (kept != 0 && extent.start <= extents[kept - 1].end)
            extents[kept - 1].end = std::max(extents[kept - 1].end, extent.end);
        else
            extents[kept++] = extent;
    }
    extents.resize(kept);
}

/// True when one of them reaches the line; `*inside`: when one of them holds the place.
bool code_lines::extent_list::reaches(std::uint32_t line, source_position code, bool* inside) {
    while (next < extents.size() && extents[next].end.line < line)
        ++next;
    *inside = false;
    std::size_t i = next;
    for (; i < extents.size() && extents[i].start.line <= line; ++i) {
        *inside = *inside || (extents[i].start <= code && code <= extents[i].end);
        if (extents[i].end.line > line)
            return true;
    }
    return i != next;
}

void code_lines::find_extents() {
    std::vector<std::uint32_t> lines; // at which functions begin
    for (const source_function& function : analysis_.functions)
        if (function.line > 0)
            lines.push_back(static_cast<std::uint32_t>(function.line));
    std::sort(lines.begin(), lines.end());
    for (const source_function& function : analysis_.functions) {
        const std::uint32_t line = static_cast<std::uint32_t>(std::max(function.line, 0));
        if (function.called) {
            functions_.extents.push_back({function.first, function.last});
            called_.extents.push_back({function.first, function.last});
        } else if (line != 0) {
            const auto next = std::upper_bound(lines.begin(), lines.end(), line);
            functions_.extents.push_back(uncalled_extent(line, next == lines.end() ? 0 : *next));
        }
    }
    functions_.join();
    called_.join();
}

const code_line& code_lines::examine(std::uint32_t line) {
    const line_start start = line <= starts_.size() ? starts_[line - 1] : line_start{0, false};
    const source_position code = {line, start.first_code};
    examined_.closes = start.closes;
    examined_.column = start.first_code;
    examined_.in_function = functions_.reaches(line, code, &examined_.inside) && start.first_code != 0;
    called_.reaches(line, code, &examined_.inside_called);
    return examined_;
}
