// Routines that no figure counts.
#pragma once

#include <cstdint>

/// True for a function that is left out of every count of functions but the one of all that were seen: no
/// name, line 0, or one of the compiler's own start-up routines.
bool excludeFunc(const char* name, std::int32_t line);

/// True when `text` begins with `prefix`; false for a null argument.
bool isSubstring(const char* prefix, const char* text);
