// The page of a source file.
#pragma once

#include "inputs/coverage_walk.h"
#include "site/code_writer.h"
#include "site/site_model.h"
#include "site/site_page.h"

class source_page_writer {
  public:
    explicit source_page_writer(const site_settings& settings) : settings_(settings), form_("source") {}

    /// Writes the page of a file and fills what its entry says of its code. `model` has the file and its
    /// functions, but not yet the directories. `survey`: of its code; `changed`: lines that a diff changes.
    void write(const file_coverage& file, const code_survey& survey, const site_model& model,
               const changed_lines& changed, site_file_entry& entry) const;

  private:
    const site_settings& settings_;
    page_template form_;
};
