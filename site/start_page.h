// The start page.
#pragma once

#include "site/figure_rows.h"
#include "site/site_model.h"
#include "site/site_page.h"

/// `older`: figures of an older run, or null.
void write_start_page(const site_settings& settings, const site_model& model, const older_figures* older);

void write_help_page(const site_settings& settings);
