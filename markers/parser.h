// The infeasible-code markers of one source file: which of its lines count as code that cannot be reached.
//
// The constructor does all the work: it scans the file for comments (comment_scanner.cpp), keeps those whose
// text is a marker and turns them into disabled lines (marker_rules.cpp). Afterwards is_disabled_line
// answers.
#pragma once

#include "markers/comment.h"
#include "markers/line_set.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

class source_loader;

class parser {
  public:
    /// Scans `file_name`, read through `sources`, when there are one-line markers, or both begin and end
    /// markers. A file that cannot be opened has no disabled lines. `function_lines`: the first lines of the
    /// file's functions, ascending; a marker in front of one of them can disable the whole function. The
    /// marker lists must outlive the parser, the lines only the construction.
    parser(const char* file_name, const std::vector<std::string>& one_line,
           const std::vector<std::string>& begin, const std::vector<std::string>& end,
           std::span<const std::int32_t> function_lines, source_loader& sources);

    /// True when the line is disabled.
    bool is_disabled_line(unsigned long wanted) const { return disabled_lines.contains(wanted); }

    /// All disabled lines.
    const line_set& all_disabled_lines() const { return disabled_lines; }

    /// Trims spaces, tabs, newlines, slashes and stars from both ends; returns its argument.
    static std::string& strip_comment(std::string& text);

  private:
    /// The texts of one role, for look-up.
    using marker_set = std::unordered_set<std::string_view>;

    char next_char();
    void parse_for_cpp_comments();
    void end_of_comment(comment_t& comment, std::size_t start, std::size_t end, bool& mark_pending);

    int registry_comment(comment_t& comment);
    bool is_simple_mark(const std::string& text) const;
    bool is_begin_mark(const std::string& text) const;
    bool is_end_mark(const std::string& text) const;
    void proceed_last_single_line_mark_as_function_block(unsigned long brace_line);
    void process_comments();

    std::string_view source;                      ///< text of the file; valid during construction only
    std::span<const std::int32_t> function_lines; ///< likewise
    std::size_t cursor = 0;                       ///< reading position in the text
    unsigned long line = 1;                       ///< line of the character being examined
    line_set disabled_lines;
    marker_set one_line_marks; ///< views of the texts given to the constructor
    marker_set begin_marks;
    marker_set end_marks;
    std::vector<comment_t> comments; ///< the markers, in order of their end in the file
    bool active = false;             ///< the file was scanned
    std::string file_name;           ///< as given, for messages
    unsigned long last_line = 0;     ///< the last line that the scan reached
};

/// True when one of the functions whose first lines are given, ascending, starts on `line`. Then `*last` is
/// the line before the next function's first line (that line itself when both start on the same one), or 0
/// for the last function.
bool is_func_bound(std::span<const std::int32_t> function_lines, unsigned long line, unsigned long* last);
