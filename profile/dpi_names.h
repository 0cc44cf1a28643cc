// Names in a dynamic profile. The index keeps each name once, in memory of the handle.
#pragma once

#include "profile/dpi_file.h"

#include <cstdint>
#include <string>
#include <vector>

/// A name that an index entry refers to, while the names are collected.
struct DPI_NAME_REFERENCE {
    std::uint64_t offset;
    std::uint32_t entry; ///< place in the index
    bool is_function;    ///< the key function name, not the file name
};

/// Gives every index entry its names. They are read in the order of their offsets, so that the file is read
/// in one sweep and strings that overlap share their memory: it never exceeds the size of the file. Sorts the
/// references. False when a name is longer than an entry can say.
bool pgopti_Load_Names(DPI_FILE* file, const char* fileName, std::vector<DPI_NAME_REFERENCE>& references);

/// Ends the run with a failed seek when `offset` is a place that no seek can reach: 2^63 or more.
void pgopti_Check_Offset(const char* fileName, std::uint64_t offset);

/// The NUL-terminated string at an offset of the file; one without NUL ends with the file, one at or beyond
/// the end is empty. The offset must be one that pgopti_Check_Offset accepts, or the run ends.
std::string pgopti_Read_String(DPI_FILE* file, const char* fileName, std::uint64_t offset);
