// Where the names of a dynamic profile lie. No reader cares, but who wants the same bytes again must know.
#pragma once

#include "profile/dpi_cursor.h"

#include <string>
#include <string_view>
#include <vector>

enum class name_placing {
    apart,  ///< for each record, each name of its own: routine names, file, function, virtual table
    shared, ///< file names, each once; then for each record its function and names that are not the same
    other
};

struct name_places {
    name_placing placing = name_placing::other;
    std::vector<std::string> files; ///< of shared ones, the file names in their order
    bool is_sayable = true;         ///< a text of lines can hold all names, and nothing else is hidden
    bool is_ascending = true;       ///< the records are in the order of their keys, equal ones among them
};

/// True when a line can end with this name, as blanks before it do not count.
bool is_line_end(std::string_view name);

/// Reads all records of a profile. False when one cannot be read; the cursor's error() tells.
bool find_names(DPI_CURSOR& cursor, name_places* places);
