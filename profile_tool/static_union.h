// The union of static profiles.
//
// Static profiles of one program are mostly the same bytes; then those are the union. Otherwise the union has
// every line once, in the order of file, routine, line. All lines of one routine name of a file belong
// together: two static profiles agree on them or not. Routines that ran in one of them at most need to have
// the same number of blocks only: importers that know no more than lines take the first counted one for a
// function that never ran. The line is that where it ran.
#pragma once

#include "profile_tool/static_lines.h"

#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

class static_union {
  public:
    /// `newest`: profiles that do not agree on a routine are no failure, and the one that was changed last
    /// counts.
    /// `locked` as for DPI_CURSOR.
    static_union(const struct stat* locked, bool newest) : locked_(locked), newest_(newest) {}

    /// Adds the static profile `path` of the dynamic one `dynamic`, which may be empty; `time`: when that was
    /// changed, in ns. False with `*error` when one cannot be read, is corrupt or does not agree.
    bool add(const std::string& path, const std::string& dynamic, std::int64_t time, std::string* error);

    bool is_empty() const { return !has_first_; }

    /// Writes the union. A failed write shows in the stream.
    void write(std::FILE* stream) const;

  private:
    /// A line without its names of file and routine.
    struct line_facts {
        std::int32_t line;
        std::int32_t block_count;
        std::string second_name;
        char flag;

        auto operator<=>(const line_facts&) const = default;
    };
    /// The lines of one routine name of a file.
    struct routine_lines {
        std::vector<line_facts> lines; ///< ascending, each once
        bool has_run = false;          ///< in a profile that has them
        std::int64_t time = 0;         ///< of the newest profile that has them; where it ran, if in any
        std::size_t path = 0;          ///< one that has them, as a place in paths_
    };
    using routine_map = std::unordered_map<std::string, routine_lines>; ///< by file, blank, routine

    bool start_map(std::string* error);
    bool read_keys(const std::string& dynamic, std::string* error);
    static_line_taker taker(routine_map* added, std::int64_t time) const;
    static bool agree(const routine_lines& a, const routine_lines& b);
    bool is_better(const routine_lines& a, const routine_lines& b) const;
    bool refuse(const std::string& key, const routine_lines& known, const routine_lines& lines,
                std::string* error) const;
    bool unite(routine_map& added, std::string* error); ///< takes them out of `added`

    const struct stat* locked_;
    bool newest_;
    bool has_first_ = false;
    bool is_uniform_ = true; ///< all were the same bytes
    std::string first_;      ///< bytes of the first one, as long as all were the same
    std::string first_path_;
    std::int64_t first_time_ = 0;            ///< of the newest of those
    std::vector<std::string> first_dynamic_; ///< the dynamic profiles of those
    std::vector<std::string> paths_;
    std::unordered_map<std::string, std::int64_t> keys_; ///< of the functions that ran in the dynamic
                                                         ///< profiles being added, with the time of the
                                                         ///< newest; kept for its memory
    routine_map routines_;
};
