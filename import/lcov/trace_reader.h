// Reader of LCOV trace files, of any version and any writer. One record a line:
//
//   SF:path                                 begins the section of a source file
//   FN:line,name   FN:line,end,name         a function
//   FNDA:count,name                         its executions
//   FNL:index,line   FNL:index,line,end     functions from LCOV 2.2 on: the place, and
//   FNA:index,count,name                    each function there
//   DA:line,count   DA:line,count,checksum  a line
//   BRDA:line,block,branch,count            a branch; the count is "-" where it was never reached, the block
//                                           begins with "e" for an exception path
//   end_of_record                           ends the section
//
// TN, VER and the totals FNF, FNH, LF, LH, BRF, BRH, and MCDC, MCF, MCH mean nothing here. What is not known
// is passed over and counted.
#pragma once

#include "import/lcov/trace_section.h"

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>

class trace_reader {
  public:
    /// `on_section` is called for each section when it is complete. `input` names the trace in messages.
    trace_reader(std::string input, std::function<void(const trace_section&)> on_section)
        : input_(std::move(input)), on_section_(std::move(on_section)) {}

    /// Takes the next piece of the trace. A fault ends the run with a message.
    void feed(std::string_view piece);

    /// The end of the trace.
    void finish();

    /// Lines with records that are not known.
    std::uint64_t unknown() const { return unknown_; }

    /// Counts that were negative or too large.
    std::uint64_t clamped() const { return clamped_; }

  private:
    /// The functions of one name, and to which of them the next count belongs.
    struct namesakes {
        std::vector<std::uint64_t> counts;
        std::size_t functions = 0;
    };
    struct record_kind;

    void take_line(std::string_view line);
    void take_record(std::string_view name, std::string_view rest);
    void begin_section(std::string_view path);
    void end_section();
    void take_function(std::string_view rest);
    void take_function_count(std::string_view rest);
    void take_place(std::string_view rest);
    void take_alias(std::string_view rest);
    void take_count(std::string_view rest);
    void take_branch(std::string_view rest);
    void pass_over(std::string_view) {}
    void count_functions();

    [[noreturn]] void fail(const char* what) const;
    std::uint32_t line_number(std::string_view text) const;
    std::uint64_t count(std::string_view text);

    static const record_kind kRecords[];

    std::string input_;
    std::function<void(const trace_section&)> on_section_;
    std::string cut_; ///< begin of a line whose end is in the next piece
    std::uint64_t line_ = 0;
    std::uint64_t unknown_ = 0;
    std::uint64_t clamped_ = 0;
    bool any_section_ = false;

    bool open_ = false;                                ///< a section has begun
    trace_section section_;                            ///< the open one; kept for its memory
    std::unordered_map<std::string, namesakes> names_; ///< of the open section
    std::unordered_map<std::string, std::pair<std::uint32_t, std::uint32_t>>
        places_; ///< line and end by index
};
