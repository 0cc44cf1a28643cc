// The lists of all files and of all functions: by what did not run, and by name.
#pragma once

#include "site/site_model.h"
#include "site/site_page.h"

void write_list_pages(const site_settings& settings, const site_model& model);
