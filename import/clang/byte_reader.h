// Checked reading of little-endian numbers, one behind the other, from bytes in memory.
//
// LEB stands for an unsigned number in groups of 7 bits, the lowest first; the top bit of a byte says that
// another group follows.
#pragma once

#include "common/little_endian.h"
#include "import/clang/input_error.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

/// Rounds `size` up to a multiple of 8; it must be less than 2^64 - 8.
constexpr std::uint64_t round_up_8(std::uint64_t size) {
    return (size + 7) & ~std::uint64_t{7};
}

/// Every function throws input_error where the bytes end too early; the bytes are the caller's and stay.
class byte_reader {
  public:
    explicit byte_reader(std::string_view bytes) : bytes_(bytes) {}

    bool empty() const { return at_ == bytes_.size(); }
    std::size_t offset() const { return at_; }
    std::size_t left() const { return bytes_.size() - at_; }

    std::uint16_t u16() { return number<std::uint16_t>(); }
    std::uint32_t u32() { return number<std::uint32_t>(); }
    std::uint64_t u64() { return number<std::uint64_t>(); }

    std::uint64_t leb() {
        if (at_ < bytes_.size() && (bytes_[at_] & 0x80) == 0) // most are short
            return static_cast<unsigned char>(bytes_[at_++]);
        return long_leb();
    }

    /// A LEB that counts or sizes things of which each takes at least one of the bytes left.
    std::size_t count() {
        const std::uint64_t value = leb();
        if (value > left())
            truncated();
        return static_cast<std::size_t>(value);
    }

    std::string_view bytes(std::uint64_t size) {
        if (size > left())
            truncated();
        const std::string_view taken = bytes_.substr(at_, static_cast<std::size_t>(size));
        at_ += taken.size();
        return taken;
    }

    void skip(std::uint64_t size) { bytes(size); }

    /// Goes on to the next multiple of 8, or to the end when that comes first.
    void align_8() {
        const std::size_t padding = (8 - at_ % 8) % 8;
        at_ += padding < left() ? padding : left();
    }

    void skip_zeros() {
        while (at_ < bytes_.size() && bytes_[at_] == 0)
            ++at_;
    }

  private:
    [[noreturn]] static void truncated() { throw input_error("ends in the middle"); }

    template <typename T> T number() {
        if (left() < sizeof(T))
            truncated();
        const T value = little_endian_at<T>(bytes_, at_);
        at_ += sizeof(T);
        return value;
    }

    std::uint64_t long_leb() {
        std::uint64_t value = 0;
        for (unsigned shift = 0; shift < 64; shift += 7) {
            const std::uint64_t byte = static_cast<unsigned char>(bytes(1)[0]);
            if (shift == 63 && byte > 1)
                break;
            value |= (byte & 0x7f) << shift;
            if ((byte & 0x80) == 0)
                return value;
        }
        throw input_error("holds a number beyond 64 bits");
    }

    std::string_view bytes_;
    std::size_t at_ = 0;
};
