// A treemap: directories and files as rectangles whose area is their number of blocks.
#pragma once

#include "common/text_buffer.h"
#include "site/site_model.h"

#include <cstdint>
#include <string_view>

/// Writes the treemap of a directory as SVG; nothing where there are no blocks. `up`: what leads to the top
/// of the site.
void put_treemap(text_buffer& out, const site_model& model, std::uint32_t directory, std::string_view up);

/// Class of a share, for colours: 0 to 6, and 7 when there is nothing.
int coverage_step(const covered_count& count);
