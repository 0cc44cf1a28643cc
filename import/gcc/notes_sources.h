// The source files that the notes (.gcno) of an object name, found without gcov.
#pragma once

#include <functional>
#include <string>
#include <string_view>

/// Calls `on_source` for each absolute name of a source file in the notes, in no particular order, some
/// several times. gcov reads notes in full; this looks for names only, in the words of any version: a name
/// follows its length, which GCC 12 and later give in bytes, earlier ones in words of four. Notes that are
/// not there or may not be read have none: gcov has the message for them. Another error ends the run with a
/// message.
void find_sources(const std::string& notes, const std::function<void(std::string_view)>& on_source);
