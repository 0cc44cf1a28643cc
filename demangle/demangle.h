// Display names of C++ routines.
#pragma once

#include <cstddef>

/// Turns a name that begins with "_Z" into its C++ form. On success returns the text and sets `*length` to
/// its length plus one; the text lives in one shared buffer, valid until the next call. Any other name, a
/// null name, a name that cannot be demangled and one whose C++ form is (or is likely to be) longer than 64
/// KiB are returned as they are, with `*length` 0. `flag` (g_iDemangFlag) has no effect: names are always
/// demangled.
const char* demangleName(const char* name, int flag, std::size_t* length);
