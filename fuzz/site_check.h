// Properties of the pages of a site.
#pragma once

#include <string>
#include <string_view>

/// A page `name` of the site in the scratch directory: it is UTF-8 without control characters; it holds no
/// tags and attributes but the site's own, and no character that should have been escaped; all that is opened
/// is closed; its links lead to pages. Returns the text of its code without the line numbers, characters
/// unescaped.
std::string check_site_page(std::string_view page, const std::string& name);

/// The code of a page against the source that it is of.
void check_code(std::string_view code, std::string_view source);
