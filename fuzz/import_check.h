// What the fuzz targets of importers that know lines share.
#pragma once

#include <string>
#include <string_view>

/// Imports `input` as the file `name` of a format: the text of the file, a byte 1, the text of the source
/// files a.c and src/b.c, a byte 1, and the options of the command line, a byte each. What the importer makes
/// of it must be a pair of profiles that the readers accept and that agree with each other, and it must make
/// the same of it again.
void check_import(const std::string& format, const std::string& name, std::string_view input);

/// The first part of such an input.
std::string_view imported_file(std::string_view input);
