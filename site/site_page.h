// A page of the site while it is written.
#pragma once

#include "common/text_buffer.h"
#include "inputs/coverage_walk.h"
#include "site/page_template.h"

#include <memory>
#include <string>
#include <string_view>

/// What all pages have in common.
struct site_settings {
    std::string directory;     ///< of the site
    std::string title;         ///< of the whole site, as HTML
    bool differential = false; ///< covered is what the reference run did not cover
    bool no_partial = false;   ///< partly covered code counts as covered
    bool has_own_style = false;
    bool has_changes = false; ///< there is a page about changed lines
};

class site_page {
  public:
    /// Opens the page `name`, a path below the site. A page that cannot be opened ends the run with a message
    /// and status 1. `title` is HTML.
    site_page(const site_settings& settings, std::string_view name, std::string title);
    site_page(const site_page&) = delete;
    site_page& operator=(const site_page&) = delete;

    text_buffer& out() { return *out_; }
    page_values& values() { return values_; }

    /// A value that is text.
    void set(std::string_view key, std::string html);

    /// What leads from this page to the top of the site: "" or "../".
    std::string_view up() const { return up_; }

    /// Writes the page by its template and closes it.
    void write(const page_template& form);

  private:
    void set_common(const site_settings& settings, std::string title);

    std::FILE* stream_ = nullptr; ///< of a page that was given up, it is closed with the run
    std::unique_ptr<text_buffer> out_;
    page_values values_;
    std::string_view up_;
};

/// Writes a file of the site as it is.
void write_site_file(const site_settings& settings, std::string_view name, std::string_view text);

/// "98.36", as the report has it, but never "100.00" for less than all; a dash when there is nothing.
std::string percent_of(const covered_count& count);

/// "9 of 10" as cells of a row: covered, total, percent and, with a bar, that in a picture.
void put_count_cells(text_buffer& out, const covered_count& count, bool with_bar);

/// A bar that shows what is covered.
void put_bar(text_buffer& out, const covered_count& count);
