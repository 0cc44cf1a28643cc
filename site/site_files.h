// The files of site/ that the build puts into the program: style sheet, script and templates.
#pragma once

#include <string_view>

/// The text of a file, by its name below site/; it must be one of them.
std::string_view site_file(std::string_view name);
