// The versions of clang's formats that the readers know, which -version prints.
#pragma once

#include <cstdint>

constexpr std::uint32_t kOldestMapping = 4;
constexpr std::uint32_t kNewestMapping = 7;

constexpr std::uint64_t kOldestRawProfile = 5;
constexpr std::uint64_t kUnreleasedRawProfile = 6; ///< no released clang wrote it
constexpr std::uint64_t kNewestRawProfile = 10;

constexpr std::uint64_t kOldestIndexedProfile = 4;
constexpr std::uint64_t kNewestIndexedProfile = 13;
