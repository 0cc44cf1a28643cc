// The text of the source file that is being processed.
//
// The scanner, the position table and the listing all need the whole text; it is read once and kept until the
// next file is asked for or it is released. Never more than one source file is in memory.
#pragma once

#include <string_view>

/// The text of `path`, or false when it is not a regular file that can be opened. `*text` stays valid until
/// the next call with another path or release_source. Where it fails to open for another reason than that
/// there is no such file for the user, "ERROR: cannot read %s" is printed and the run, which goes on, ends
/// with status 1 (pgt_Incomplete). A read that fails half-way ends the run with that message at once.
bool load_source(const char* path, std::string_view* text);

/// Forgets the text, so that the next load_source reads the file anew. The memory is kept for the next file.
void release_source();
