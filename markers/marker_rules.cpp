// Turns marker comments into disabled lines.

#include "markers/parser.h"
#include "profile/line_order.h"
#include "profile/module_list.h"

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

bool is_func_bound(unsigned long line, unsigned long* last) {
    const auto before = [](const COMP* function, unsigned long wanted) {
        return function->line < 0 || static_cast<unsigned long>(function->line) < wanted;
    };
    const auto found = std::lower_bound(funcs_by_line.begin(), funcs_by_line.end(), line, before);
    if (found == funcs_by_line.end() || static_cast<unsigned long>((*found)->line) != line)
        return false;
    const COMP* next = (*found)->nextByLine;
    if (!next) {
        *last = 0;
        return true;
    }
    const unsigned long next_line = static_cast<unsigned long>(next->line);
    *last = next_line > line ? next_line - 1 : next_line;
    return true;
}

/// A one-line marker in front of a function's opening brace disables the whole function.
void parser::proceed_last_single_line_mark_as_function_block(unsigned long brace_line) {
    const auto mark = std::find_if(comments.rbegin(), comments.rend(), comment_t::is_simple_comment);
    unsigned long last = 0;
    if (mark == comments.rend() || !is_func_bound(brace_line, &last))
        return;
    mark->type = comment_t::begin_mark;
    if (last != 0)
        comments.emplace_back(std::string(), last, last, comment_t::end_mark);
}

void parser::process_comments() {
    std::stable_sort(comments.begin(), comments.end(), comment_t::position_criteria);
    std::vector<unsigned long> open_begins; // start lines of the begin markers not yet closed
    for (const comment_t& comment : comments) {
        if (comment.type == comment_t::simple_mark) {
            mark_lines(comment.start_line, comment.start_line);
        } else if (comment.type == comment_t::begin_mark) {
            open_begins.push_back(comment.start_line);
        } else if (open_begins.empty()) {
            std::fprintf(stderr,
                         "A begining marker matching an ending marker in file: %s was not found.\n"
                         "All the subsequent infeasible markers will be ignored.\n",
                         file_name.c_str());
            return;
        } else {
            mark_lines(open_begins.back(), comment.start_line);
            open_begins.pop_back();
        }
    }
    for (; !open_begins.empty(); open_begins.pop_back())
        mark_lines(open_begins.back(), last_line);
}

/// Disables the lines from `first` to `last`; none when `first` is greater.
void parser::mark_lines(unsigned long first, unsigned long last) {
    if (first <= last)
        disabled_lines.push_back({first, last});
}

/// Sorts the ranges and joins those that overlap, so that nested blocks cost no more than flat ones.
void parser::sort_disabled_lines() {
    std::sort(disabled_lines.begin(), disabled_lines.end(),
              [](const line_range& a, const line_range& b) { return a.first < b.first; });
    std::size_t kept = 0;
    for (const line_range& range : disabled_lines) {
        if (kept != 0 && range.first <= disabled_lines[kept - 1].last)
            disabled_lines[kept - 1].last = std::max(disabled_lines[kept - 1].last, range.last);
        else
            disabled_lines[kept++] = range;
    }
    disabled_lines.resize(kept);
}

bool parser::is_disabled_line(unsigned long wanted) const {
    const auto after =
        std::upper_bound(disabled_lines.begin(), disabled_lines.end(), wanted,
                         [](unsigned long l, const line_range& range) { return l < range.first; });
    return after != disabled_lines.begin() && wanted <= (after - 1)->last;
}
