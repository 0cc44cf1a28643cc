// The union of static profiles.
//
// Static profiles of one program are mostly the same bytes; then those are the union. Otherwise the union has
// every line once, in the order of file, routine, line. All lines of one routine name of a file belong
// together: two static profiles agree on them or not.
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
    explicit static_union(bool newest) : newest_(newest) {}

    /// Adds the static profile `path`; `time`: when its profiles were changed, in ns. False with `*error`
    /// when it cannot be read, is corrupt or does not agree.
    bool add(const std::string& path, std::int64_t time, std::string* error);

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
        std::int64_t time = 0;         ///< of the newest profile that has them
        std::size_t path = 0;          ///< one that has them, as a place in paths_
    };
    using routine_map = std::unordered_map<std::string, routine_lines>; ///< by file, blank, routine

    static_line_taker taker(routine_map* added, std::int64_t time) const;
    bool unite(routine_map added, std::string* error);

    bool newest_;
    bool has_first_ = false;
    bool is_uniform_ = true; ///< all were the same bytes
    std::string first_;      ///< bytes of the first one, as long as all were the same
    std::string first_path_;
    std::int64_t first_time_ = 0; ///< of the newest of those
    std::vector<std::string> paths_;
    routine_map routines_;
};
