// The coverage of a program, one source file after the other: what every companion of vexcov is a writer of.
//
//   coverage_walk walk(options);                       // opens the profiles, reads the lists
//   const coverage_totals totals = walk.run([&](const file_coverage& file) { ... });
//
// The files come in ascending order of their names in the static profile, as bytes; their figures and those
// of the totals are the ones that vexcov's report shows for the same options. Each file is forgotten before
// the next one is read. Messages are vexcov's, all on standard error.
#pragma once

#include "analysis/source_analysis.h"
#include "inputs/coverage_options.h"
#include "inputs/line_coverage.h"
#include "inputs/root_names.h"
#include "profile/module_list.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

struct DPI_FILE;

/// A total and what of it is covered. In differential mode "covered" is what is new.
struct covered_count {
    std::int64_t total = 0;
    std::int64_t covered = 0;
};

/// Figures of one file, or of all.
struct coverage_figures {
    covered_count functions;
    covered_count blocks;
    covered_count lines;           ///< lines that hold code; a line whose count is not 0 is covered
    std::int64_t partly_lines = 0; ///< of those covered, the ones that are covered in part only

    void add(const coverage_figures& other);
};

/// One source file.
struct file_coverage {
    const source_analysis& analysis;      ///< its text is there; line_walk may walk it
    std::string name;                     ///< relative to the root, or absolute where the file lies outside
    bool below_root;                      ///< it lies below the root
    std::span<const line_coverage> lines; ///< those that hold code, ascending
    coverage_figures figures;
    const source_analysis* whole; ///< the file without the reference; null unless coverage_options ask for it
};

/// All files. A file whose source is not there is in no figure, as in the report.
struct coverage_totals {
    covered_count files;
    coverage_figures figures;
    std::vector<std::string> missing; ///< source files that are not there, as the static profile names them
};

class coverage_walk {
  public:
    /// Opens the profiles and reads the component list. What cannot be used ends the run with vexcov's
    /// message and exit status 1. `options` must outlive the walk.
    explicit coverage_walk(const coverage_options& options);
    ~coverage_walk();
    coverage_walk(const coverage_walk&) = delete;
    coverage_walk& operator=(const coverage_walk&) = delete;

    const root_names& names() const { return names_; }

    /// Reads the static profile and calls `sink` with every source file of interest that is there. What is
    /// given to it is valid during the call. Where something could not be read in full the run ends with
    /// status 1: nothing must be written from a part of the figures. Can be
    /// called again; what is not there is told the first time. `watch`, if there is one, sees every line of a
    /// file before the file is given to `sink`.
    coverage_totals run(const std::function<void(const file_coverage&)>& sink,
                        const line_watcher& watch = nullptr);

    /// Likewise, and the run ends with a message and exit status 1 when not one source file is there.
    coverage_totals run_any(const std::function<void(const file_coverage&)>& sink,
                            const line_watcher& watch = nullptr);

  private:
    struct close_profile {
        void operator()(DPI_FILE* file) const;
    };

    bool analyse(COMP* first, source_analysis* analysis);
    bool wants_whole() const { return options_.also_whole && reference_; }
    void visit(const source_analysis& analysis, const std::function<void(const file_coverage&)>& sink,
               const line_watcher& watch);

    const coverage_options& options_;
    root_names names_;
    std::unique_ptr<DPI_FILE, close_profile> profile_;
    std::unique_ptr<DPI_FILE, close_profile> reference_; ///< null outside differential mode
    module_list modules_;
    coverage_totals totals_;
    bool again_ = false;               ///< it was run before
    std::vector<line_coverage> lines_; ///< of the file at hand; kept for its memory
    source_analysis whole_;            ///< of the file at hand; where it is wanted
};
