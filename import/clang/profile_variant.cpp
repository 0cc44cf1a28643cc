#include "import/clang/profile_variant.h"

#include "import/clang/input_error.h"

#include <string>

constexpr unsigned kFirstVariant = 56;
constexpr unsigned kEntryFirst = 58; ///< a matter of order, for profiles of other kinds
constexpr unsigned kByteCounters = 60;

static std::uint64_t bit(unsigned number) {
    return std::uint64_t{1} << number;
}

std::uint64_t checked_profile_version(std::uint64_t field) {
    for (unsigned number = kFirstVariant; number < 64; ++number) {
        if ((field & bit(number)) != 0 && number != kEntryFirst && number != kByteCounters)
            throw input_error("is a profile of another kind than that of -fprofile-instr-generate "
                              "(IR level, correlated, function entries or temporal); build with "
                              "-fprofile-instr-generate -fcoverage-mapping");
    }
    return field & 0xffffffff;
}

bool has_byte_counters(std::uint64_t field) {
    return (field & bit(kByteCounters)) != 0;
}

void unknown_profile_version(bool newer, std::uint64_t version) {
    throw input_error("was made by " + std::string(newer ? "a newer" : "an older") + " clang (version " +
                      std::to_string(version) +
                      " of the profile is not supported); give the output of that clang's llvm-cov export");
}
