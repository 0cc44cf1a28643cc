// Names and places of functions in source files: which functions are one, and what tells the others apart.
#pragma once

#include "common/source_position.h"

#include <cstdint>
#include <string>
#include <vector>

struct named_place {
    std::uint32_t file;
    source_position start;
    std::string* name;
    std::uint32_t index = 0; ///< of the function, as its owner counts
};

/// Functions that are one in the source though their names do not show it.
struct namesakes {
    std::string name;                   ///< without parameters
    std::vector<std::uint32_t> indices; ///< of two functions at least; ascending
};

/// Finds functions of different mangled names that begin at one place and differ in their parameters only:
/// friends that are defined in a class template, which have no arguments of their own in their names.
std::vector<namesakes> find_friends(std::vector<named_place> places);

/// Appends ":LINE" to names of templates that come again in their file, such as those of overloads, and
/// ":LINE:COLUMN" where even that is not enough. A file has each name at a place once.
void tell_apart(std::vector<named_place> places);
