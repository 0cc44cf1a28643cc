// Names of the site's files: of a source file's or a directory's path.
//
// The name of a page depends on its path alone, so that links from outside stay; different paths have
// different names, also where the file system takes capital and small letters for the same.
#pragma once

#include <string>
#include <string_view>

/// The path as a file name without extension, of the characters a-z, 0-9, ".", "_", "-", "~" and "=": "/" is
/// "~", a capital letter "=" and the small one, any other byte "==" and two digits in hexadecimal. The name
/// of a long path is cut off and ends in "==x" and a digest of the path.
std::string page_stem(std::string_view path);

/// "s/STEM.html" and "d/STEM.html"; `page` counts from 1. The directory of all files has no path.
std::string source_page_name(std::string_view path);
std::string directory_page_name(std::string_view path, std::size_t page = 1);

/// "STEM.html" and "STEM-2.html" for page 2 of a list.
std::string list_page_name(std::string_view stem, std::size_t page);
