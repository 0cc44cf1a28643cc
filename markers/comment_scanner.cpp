// Finds the comments of a source file, character by character.

#include "common/fatal.h"
#include "common/source_file.h"
#include "markers/parser.h"

#include <cstdio>

parser::parser(const char* name, const std::vector<std::string>& one_line,
               const std::vector<std::string>& begin, const std::vector<std::string>& end,
               std::span<const std::int32_t> first_lines, source_loader& sources)
    : function_lines(first_lines), file_name(name) {
    if (one_line.empty() && (begin.empty() || end.empty()))
        return;
    try {
        if (!sources.load(name, &source))
            return;
        active = true;
        one_line_marks = marker_set(one_line.begin(), one_line.end());
        begin_marks = marker_set(begin.begin(), begin.end());
        end_marks = marker_set(end.begin(), end.end());
        parse_for_cpp_comments();
        process_comments();
        disabled_lines.finish();
    } catch (const std::exception&) {
        std::fputs("Unexpected issue, please contact developers\n", stderr);
        pgt_Exit(1);
    }
}

/// The next character, or 0 at the end. A NUL byte looks like the end of the file.
char parser::next_char() {
    return cursor < source.size() ? source[cursor++] : '\0';
}

namespace {
enum class scan_state { code, character_literal, string_literal, line_comment, block_comment };
} // namespace

/// Registers the comment whose text is source[start, end).
void parser::end_of_comment(comment_t& comment, std::size_t start, std::size_t end, bool& mark_pending) {
    comment.text.assign(source.substr(start, end - start));
    comment.end_line = line;
    if (registry_comment(comment) == comment_t::simple_mark)
        mark_pending = true;
}

// c is the character being examined, n the one after it. Deliberate oddities, which existing marked sources
// rely on:
// - the last character of the file is never examined, so a comment must end before it;
// - a backslash in a literal is passed over alone: an escaped quote ends the literal;
// - slash-star-slash and the empty block comment stay open until the next star-slash;
// - of a block comment's end only the star is consumed, its slash is examined as code.
void parser::parse_for_cpp_comments() {
    scan_state state = scan_state::code;
    comment_t comment;
    std::size_t start = 0;     // of the comment being assembled
    bool mark_pending = false; // a one-line marker has just ended: a brace may follow
    char c = next_char();
    for (char n = next_char(); c != '\0' && n != '\0'; c = n, n = next_char()) {
        const std::size_t at = cursor - 2; // index of c
        if (c == '\\' && (state == scan_state::character_literal || state == scan_state::string_literal))
            continue;
        if (c == '\n' && state == scan_state::line_comment) {
            end_of_comment(comment, start, at, mark_pending);
            state = scan_state::code;
        } else if (c == '/' && (n == '/' || n == '*') && state == scan_state::code) {
            comment.start_line = line;
            start = at;
            state = n == '/' ? scan_state::line_comment : scan_state::block_comment;
        } else if (c == '*' && n == '/' && state == scan_state::block_comment) {
            if (at - start > 2) {
                end_of_comment(comment, start, at, mark_pending);
                state = scan_state::code;
            }
        } else if (c == '\'' && (state == scan_state::code || state == scan_state::character_literal)) {
            state = state == scan_state::code ? scan_state::character_literal : scan_state::code;
            mark_pending = false;
        } else if (c == '"' && (state == scan_state::code || state == scan_state::string_literal)) {
            state = state == scan_state::code ? scan_state::string_literal : scan_state::code;
            mark_pending = false;
        }
        if (c == '\n')
            ++line;
        if (c == '{' && mark_pending)
            proceed_last_single_line_mark_as_function_block(line);
        const bool blank = c == '\n' || c == '\t' || c == ' ' || c == '*' || c == '/';
        if (state == scan_state::line_comment || state == scan_state::block_comment ||
            (state == scan_state::code && !blank))
            mark_pending = false;
    }
    last_line = line;
}

std::string& parser::strip_comment(std::string& text) {
    static const char kTrimmed[] = " /*\t\n";
    const std::size_t first = text.find_first_not_of(kTrimmed);
    if (first == std::string::npos)
        text.clear();
    else
        text = text.substr(first, text.find_last_not_of(kTrimmed) - first + 1);
    return text;
}
