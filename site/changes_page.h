// The page of the lines that a diff changes.
#pragma once

#include "changes/changed_coverage.h"
#include "site/code_writer.h"
#include "site/site_model.h"
#include "site/site_options.h"
#include "site/site_page.h"

#include <cstdio>
#include <string>
#include <unordered_map>

/// What a diff changes in the files of a walk.
class site_changes {
  public:
    /// Reads the diff that the options name, if they do, and walks the files once to find those that it is
    /// about. A diff that cannot be used ends the run with a message and status 1.
    site_changes(const site_options& options, coverage_walk& walk);
    site_changes(const site_changes&) = delete;
    site_changes& operator=(const site_changes&) = delete;

    /// The changed lines of a file, by its name in the walk.
    const changed_lines& lines_of(const std::string& name) const;

    /// Takes the changed lines of a file while it is walked. `survey`: of its code.
    void add_excerpts(const file_coverage& file, const code_survey& survey, const std::string& page);

    /// Writes the page.
    void write(const site_settings& settings);

  private:
    void put_files(text_buffer& out) const;
    void put_without_data(text_buffer& out) const;

    struct section {
        const changed_file_coverage* file;
        std::string page;
        std::string code; ///< excerpts as HTML
    };

    changed_coverage changed_;
    std::unordered_map<std::string_view, const changed_file_coverage*> by_source_;
    std::unordered_map<std::string, changed_lines> lines_;
    std::vector<section> sections_;
};
