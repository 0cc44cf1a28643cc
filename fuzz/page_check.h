// Properties of written pages.
#pragma once

#include <string>
#include <string_view>

/// The annotated listing of `source`: its lines are all there and in order with their numbers, every anchor
/// that is opened is closed on its line (but for a last line without newline, which stays open), and nothing
/// stands between the lines but the counts. Returns the number of lines with counts.
std::size_t check_listing(std::string_view page, std::string_view source);

/// Any page: the tags that come in pairs are balanced, and every link leads to a page in `directory`, a path
/// below the scratch directory with a slash at its end (links themselves may begin with the directory).
void check_page(std::string_view page, const std::string& directory);
