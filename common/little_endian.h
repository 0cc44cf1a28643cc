// Numbers as profiles and object files store them, the least significant byte first, on any machine.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

/// Number of type `T` at `offset` of `bytes`, which must reach that far.
template <typename T> T little_endian_at(std::string_view bytes, std::size_t offset) {
    T value = 0;
    if constexpr (__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__) {
        std::memcpy(&value, bytes.data() + offset, sizeof(T));
    } else {
        for (std::size_t i = sizeof(T); i-- > 0;)
            value = static_cast<T>(value << 7 << 1 | static_cast<unsigned char>(bytes[offset + i]));
    }
    return value;
}

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
