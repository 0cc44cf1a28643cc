// What tests reach of the lines that a diff changes.
//
//   change_tracker tracker(read_diff(...), is_root_given);
//   walk.run([&](const file_coverage& file) { tracker.take(file, walk.names()); });
//   const changed_coverage changed = tracker.finish();
//
// The names of a diff are relative to one directory, mostly the top of the repository. Where the root is
// given they are relative to it. Otherwise a changed file may be any source file whose path ends in its name,
// and the directory is the one, in front of the name, below which most of the changed files are found; the
// root wins where others have as many. It is not guessed when the root holds source files and a file of one
// of the names, which then may be the changed one although it has no data. Where a path fits nothing it is
// tried without symbolic links.
#pragma once

#include "changes/unified_diff.h"
#include "inputs/coverage_walk.h"

#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

/// A changed file that the profile knows.
struct changed_file_coverage {
    std::string name;                  ///< as the diff has it
    std::string source;                ///< as file_coverage has it
    covered_count lines;               ///< changed lines that hold code
    covered_count blocks;              ///< blocks that begin on these; a function never called is one
    std::vector<line_range> uncovered; ///< of the lines, those that were not executed
    std::int64_t new_blocks = 0; ///< differential mode: of the blocks, those that only this run executed
    std::vector<line_range> new_lines; ///< differential mode: lines that such blocks begin on
};

struct changed_coverage {
    std::vector<changed_file_coverage> files; ///< in the order of their sources
    std::vector<std::string> without_data;    ///< other files that got lines, in the order of the diff
    std::string directory;                    ///< that the names are relative to; empty when none is known
    bool is_root = true;                      ///< it is the root, or none is known
    bool empty = false;                       ///< the diff changes no file
};

class change_tracker {
  public:
    /// `root_given`: the names of the diff are relative to the root of the walk.
    change_tracker(std::vector<changed_file> files, bool root_given);

    /// Takes the next source file of the walk. In differential mode it must hold `whole`.
    void take(const file_coverage& file, const root_names& names);

    /// The end of the walk. Ends the run with a message and exit status 1 when the diff cannot be one of
    /// these sources: no file that might hold code is known, several directories are as likely, or a file
    /// lacks a changed line.
    changed_coverage finish();

  private:
    /// A source file that a changed file may be.
    struct fit {
        std::size_t changed; ///< index in files_
        std::uint32_t lines; ///< of the source file
        changed_file_coverage coverage;
    };

    bool take_path(const std::string& path, const std::string& root, const file_coverage& file);
    bool may_hold_code(const changed_file& file) const;
    void refuse_foreign() const;
    const std::string& best_directory() const;
    void refuse_doubtful(const std::string& directory) const;

    const std::vector<changed_file> files_;
    const bool root_given_;
    std::string root_;
    bool any_below_root_ = false;                                ///< of the source files
    std::unordered_map<std::string, std::size_t> written_names_; ///< of those with others in a profile
    std::unordered_map<std::string_view, std::size_t> by_name_;  ///< files that are there behind the change
    std::unordered_set<std::string> extensions_;                 ///< of the source files
    std::map<std::string, std::vector<fit>> fits_; ///< by the directory that would be the names' own
};
