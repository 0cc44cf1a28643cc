// What the fuzz targets of the importers share.
#pragma once

#include <string>
#include <string_view>
#include <vector>

/// Names of the profiles that are written. An input hardly ever has a source of the name.
inline constexpr const char* kStaticName = "static profile";
inline constexpr const char* kDynamicName = "dynamic profile";

/// One kind of input: the text of a file, a byte 1, the text of its source files, a byte 1, and the options
/// of the command line, a byte each.
struct import_trial {
    std::vector<std::string> command; ///< what comes before the options
    std::string file;                 ///< name of the file; it is the standard input, too
    std::vector<std::string> sources; ///< names of the source files
    std::string_view options;         ///< the words of the command line, between blanks
    bool ascending;                   ///< the blocks of a function stand in the order of their positions
};

/// Imports an input. What the importer makes of it must be a pair of profiles that the readers accept and
/// that agree with each other, and it must make the same of it again when it finds them.
void check_import(const import_trial& trial, std::string_view input);

/// The first part of an input.
std::string_view imported_file(std::string_view input);
