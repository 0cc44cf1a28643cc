// The records in the two files that belong to an object of GCC: whether all of them are there, which gcov
// does not tell.
//
// Notes: behind the head (object_files.h) stand, from GCC 9 on, a checksum (since GCC 12), the directory
// where the compiler ran, behind its length, and a word; then records to the end of the file. Counters:
// behind the head and the checksum (since GCC 12) stand records up to a kind of 0.
//
//   offset  bytes  meaning
//        0      4  kind, such as 0x01000000 for a function, 0x01450000 for the lines of a block
//        4      4  length of what follows; below 0: counters that are all 0 and not stored
//
// Lengths are bytes since GCC 12, and words of four before.
#pragma once

#include "import/gcc/object_files.h"

#include <cstdint>
#include <optional>
#include <string>

struct object_records {
    bool cut_short = false;                 ///< the file ends within a record, or a record must follow
    std::optional<std::uint32_t> functions; ///< those that have notes or counters, if all are known
};

// Of a file in the other order of bytes, or with kinds of records that are not known, nothing is said. One
// that cannot be read for lack of descriptors and the like ends the run with a message.

/// The records of a notes file. A compiler that was killed leaves some of them. The last function is one of
/// those that are there only when its lines are.
object_records read_notes_records(const std::string& path, const compiler_version& version);

/// The records of a counter file. There are no more functions in it than in the notes.
object_records read_counters_records(const std::string& path, const compiler_version& version);
