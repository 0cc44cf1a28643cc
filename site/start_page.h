// The start page.
#pragma once

#include "site/figure_rows.h"
#include "site/site_model.h"
#include "site/site_page.h"

/// Takes the start page of an older run away, before anything else of it is replaced: only a site that is
/// whole has one.
void remove_start_page(const site_settings& settings);

/// To be written last. Unless all of it could be written there is none. `older`: figures of an older run, or
/// null.
void write_start_page(const site_settings& settings, const site_model& model, const older_figures* older);

void write_help_page(const site_settings& settings);
