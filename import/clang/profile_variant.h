// The version of a profile: the low 32 bits are a number, the high bits say what kind of profile it is.
#pragma once

#include <cstdint>

/// The number in a version field. Throws input_error for the kinds of profiles that hold no counters of
/// source coverage.
std::uint64_t checked_profile_version(std::uint64_t field);

/// Whether each counter of a raw profile is one byte.
bool has_byte_counters(std::uint64_t field);

/// Ends the reading of a profile with the words for one that was made by another version of clang.
[[noreturn]] void unknown_profile_version(bool newer, std::uint64_t version);
