// Names that tell the places of a source file apart.
#pragma once

#include "common/source_position.h"

#include <cstdint>
#include <string>
#include <vector>

/// A function that stands for all instances of a template.
struct named_place {
    std::uint32_t file;
    source_position start;
    std::string* name; ///< find_shared_name's
};

/// Appends ":LINE" to names that come again in their file, such as those of overloads, and ":LINE:COLUMN"
/// where even that is not enough. A file has each name at a place once.
void tell_apart(std::vector<named_place> places);
