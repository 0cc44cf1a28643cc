// Which function each line of a document belongs to.
//
// gcov names a function with most lines, but mostly as a guess: the innermost one whose text is around the
// line. Lines outside every function have none, and where the code of two functions is on one line, both
// counts are in one.
#pragma once

#include "import/gcc/gcov_document.h"

#include <cstdint>
#include <string_view>
#include <unordered_map>
#include <vector>

constexpr std::uint32_t kNoFunction = 0xffffffff;

/// Finds the owners, one file after the other. Keeps its memory for the next file.
class line_owners {
  public:
    /// For each line of `file` the index of its function in `document`, or kNoFunction. The function that
    /// gcov names, if the line is in it and it was entered or the line has no count; else the innermost
    /// around the line, executed when the line has a count. Valid until the next call.
    const std::vector<std::uint32_t>& find(const gcov_document& document, const gcov_file& file);

  private:
    /// A function around the line at hand.
    struct open_function {
        std::uint32_t index;
        std::uint32_t executed; ///< the innermost executed one that is or is around this one, or kNoFunction
        source_position end;    ///< not behind that of the one around it
    };

    void order_functions(const gcov_document& document, const gcov_file& file);
    void order_lines(const gcov_document& document, const gcov_file& file);
    void open(const gcov_document& document, std::uint32_t index);
    std::uint32_t owner(const gcov_document& document, const gcov_line& line) const;

    std::vector<std::uint32_t> owners_;
    std::vector<std::uint32_t> functions_; ///< ascending by start, the longer first
    std::vector<std::uint32_t> lines_;     ///< ascending
    std::vector<open_function> open_;      ///< around the line at hand, the innermost last
    std::unordered_map<std::string_view, std::uint32_t> by_name_;
};
