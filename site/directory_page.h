// The pages of directories.
#pragma once

#include "site/site_model.h"
#include "site/site_page.h"

void write_directory_pages(const site_settings& settings, const site_model& model);
