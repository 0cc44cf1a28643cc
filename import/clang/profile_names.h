// The names of functions, which programs and raw profiles hold compressed.
//
//   section   blocks, one for each translation unit, with zero bytes between them
//   block     LEB size unpacked, LEB size packed (0: is not packed), the text
//   text      names, with a byte 1 between them
//
// A function of internal linkage has the base name of its main source file and a colon in front.
#pragma once

#include <functional>
#include <string_view>

/// Calls `on_name` for each name of a section until it returns false; the view is valid during the call.
/// Throws input_error where the section is damaged.
void for_each_name(std::string_view section, const std::function<bool(std::string_view)>& on_name);
