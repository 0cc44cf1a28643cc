// The 64-bit hash by which clang refers to names.
#pragma once

#include <cstdint>
#include <string_view>

/// The first 8 bytes of the MD5 of `text` as a little-endian number.
std::uint64_t name_hash(std::string_view text);
