// Turns marker comments into disabled lines.

#include "markers/parser.h"

#include "common/message.h"

#include <algorithm>
#include <cstdio>

bool parser::is_simple_mark(const std::string& text) const {
    return one_line_marks.count(text) != 0;
}

bool parser::is_begin_mark(const std::string& text) const {
    return begin_marks.count(text) != 0;
}

bool parser::is_end_mark(const std::string& text) const {
    return end_marks.count(text) != 0;
}

/// Classifies a finished comment, keeps it when it is a marker, and resets it for the next one.
int parser::registry_comment(comment_t& comment) {
    strip_comment(comment.text);
    comment.type = comment_t::no_mark;
    if (is_simple_mark(comment.text))
        comment.type = comment_t::simple_mark;
    if (is_begin_mark(comment.text))
        comment.type = comment_t::begin_mark;
    if (is_end_mark(comment.text))
        comment.type = comment_t::end_mark;
    const int type = comment.type;
    if (type != comment_t::no_mark)
        comments.push_back(comment);
    comment = comment_t();
    return type;
}

bool is_func_bound(std::span<const std::int32_t> function_lines, unsigned long line, unsigned long* last) {
    const auto before = [](std::int32_t function, unsigned long wanted) {
        return function < 0 || static_cast<unsigned long>(function) < wanted;
    };
    const auto found = std::lower_bound(function_lines.begin(), function_lines.end(), line, before);
    if (found == function_lines.end() || static_cast<unsigned long>(*found) != line)
        return false;
    if (found + 1 == function_lines.end()) {
        *last = 0;
        return true;
    }
    const unsigned long next_line = static_cast<unsigned long>(*(found + 1));
    *last = next_line > line ? next_line - 1 : next_line;
    return true;
}

/// A one-line marker in front of a function's opening brace disables the whole function.
void parser::proceed_last_single_line_mark_as_function_block(unsigned long brace_line) {
    const auto mark = std::find_if(comments.rbegin(), comments.rend(), comment_t::is_simple_comment);
    unsigned long last = 0;
    if (mark == comments.rend() || !is_func_bound(function_lines, brace_line, &last))
        return;
    mark->type = comment_t::begin_mark;
    if (last != 0)
        comments.emplace_back(std::string(), last, last, comment_t::end_mark);
}

static void warn_of_lone_end(const std::string& file_name) {
    if (messages_are_named())
        print_warning(
            "%s has an end marker of infeasible code without a begin; all markers behind it are ignored",
            printable(file_name).c_str());
    else
        std::fprintf(stderr,
                     "A begining marker matching an ending marker in file: %s was not found.\n"
                     "All the subsequent infeasible markers will be ignored.\n",
                     file_name.c_str());
}

void parser::process_comments() {
    std::stable_sort(comments.begin(), comments.end(), comment_t::position_criteria);
    std::vector<unsigned long> open_begins; // start lines of the begin markers not yet closed
    for (const comment_t& comment : comments) {
        if (comment.type == comment_t::simple_mark) {
            disabled_lines.add(comment.start_line, comment.start_line);
        } else if (comment.type == comment_t::begin_mark) {
            open_begins.push_back(comment.start_line);
        } else if (open_begins.empty()) {
            warn_of_lone_end(file_name);
            return;
        } else {
            disabled_lines.add(open_begins.back(), comment.start_line);
            open_begins.pop_back();
        }
    }
    for (; !open_begins.empty(); open_begins.pop_back())
        disabled_lines.add(open_begins.back(), last_line);
}
