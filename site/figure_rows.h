// Rows of figures: of functions, blocks and lines, as several pages have them.
#pragma once

#include "inputs/coverage_walk.h"
#include "site/site_page.h"

/// Figures of an older run.
struct older_figures {
    covered_count files; ///< zero where they are not known
    coverage_figures figures;
};

/// Sets the value "figures": rows of a table, one each for functions, blocks and lines, with their change
/// since `older` unless it is null.
void set_figure_rows(site_page& page, const coverage_figures& figures, const older_figures* older);

/// The same with a row for files.
void set_all_figure_rows(site_page& page, const covered_count& files, const coverage_figures& figures,
                         const older_figures* older);
