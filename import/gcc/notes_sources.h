// What the notes (.gcno) of an object say without gcov: whether they are whole, and which source files they
// name.
//
// Behind the head (object_files.h) stand, from GCC 9 on, a checksum (since GCC 12), the directory where the
// compiler ran, behind its length, and a word; then records to the end of the file:
//
//   offset  bytes  meaning
//        0      4  kind, such as 0x01450000 for the lines of a block
//        4      4  length of what follows
//
// Lengths are bytes since GCC 12, and words of four before.
#pragma once

#include "import/gcc/object_files.h"

#include <functional>
#include <string>
#include <string_view>

/// Calls `on_source` for each absolute name of a source file in the notes, in no particular order, some
/// several times. gcov reads notes in full; this looks for names only, in the words of any version: a name
/// follows its length, which GCC 12 and later give in bytes, earlier ones in words of four. Notes that cannot
/// be opened have none: gcov has the message for them. A read error ends the run with a message.
void find_sources(const std::string& notes, const std::function<void(std::string_view)>& on_source);

/// Whether the notes end within a record, as those of a compiler that was killed do: gcov reads what is there
/// and says nothing. Not asked of notes in an order of bytes or with kinds of records that are not known.
bool are_cut_short(const std::string& notes, const compiler_version& version);
