// Numbers as the profile files store them, the least significant byte first, on any machine.
#pragma once

#include <cstddef>
#include <cstdint>

/// The 4-byte number at `p`.
inline std::uint32_t read_u32(const unsigned char* p) {
    return std::uint32_t{p[0]} | std::uint32_t{p[1]} << 8 | std::uint32_t{p[2]} << 16 |
           std::uint32_t{p[3]} << 24;
}

/// The 8-byte number at `p`.
inline std::uint64_t read_u64(const unsigned char* p) {
    return std::uint64_t{read_u32(p)} | std::uint64_t{read_u32(p + 4)} << 32;
}

/// Stores the low `width` bytes of `value` at `p`; width <= 8.
inline void store_number(char* p, std::uint64_t value, std::size_t width) {
    for (std::size_t i = 0; i < width; ++i)
        p[i] = static_cast<char>((value >> (8 * i)) & 0xff);
}
