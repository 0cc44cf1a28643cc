// The heads of the two files that belong to an object of GCC: the notes (.gcno), which the compiler writes,
// and the counters (.gcda), which the program adds up in each run.
//
//   offset  bytes  meaning
//        0      4  magic number, "gcno" or "gcda" read as a number: its bytes are reversed on most machines
//        4      4  version of the compiler, four characters in the same order, such as "B22*"
//        8      4  stamp: differs from one compilation to the next
//
// A counter file that is complete ends in four zero bytes. object_records.h has what stands between.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

/// Which compiler wrote a file. clang says that it is GCC 4.8 unless told otherwise.
struct compiler_version {
    unsigned major = 0; ///< 0: none that is known
    unsigned minor = 0;
    bool operator==(const compiler_version&) const = default;
    /// "GCC 12.2"
    std::string text() const;
};

struct object_head {
    compiler_version version;
    std::uint32_t stamp = 0;
};

// A file that is there and cannot be opened for lack of descriptors and the like ends the run with a message.

/// The head of a notes file; nothing when it cannot be read, is none, or is of no known version.
std::optional<object_head> read_notes_head(const std::string& path);

/// The head of a counter file; nothing when it cannot be read, is none, or does not end like a complete one.
std::optional<object_head> read_counters_head(const std::string& path);
