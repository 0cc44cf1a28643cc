#include "import/clang/inflate.h"

#include "import/clang/input_error.h"

#include <algorithm>
#include <libdeflate.h>
#include <memory>
#include <new>

/// No stream of n bytes unpacks to more than 1032 n.
constexpr std::uint64_t kLargestRatio = 1032;
constexpr std::uint64_t kSlack = 64;

/// Names unpack to about five times their size. More memory is taken only where a stream has more.
constexpr std::uint64_t kUsualRatio = 8;

namespace {

struct freed_by_library {
    void operator()(libdeflate_decompressor* decompressor) const {
        libdeflate_free_decompressor(decompressor);
    }
};

} // namespace

void inflate_exactly(std::string_view packed, std::uint64_t size, byte_buffer* to) {
    if (size / kLargestRatio > packed.size() + kSlack)
        throw input_error("holds compressed data of an impossible size");
    const std::unique_ptr<libdeflate_decompressor, freed_by_library> decompressor(
        libdeflate_alloc_decompressor());
    if (!decompressor)
        throw std::bad_alloc();
    libdeflate_result result = LIBDEFLATE_INSUFFICIENT_SPACE;
    std::size_t used = 0;
    std::size_t done = 0;
    for (std::uint64_t room = 0; result == LIBDEFLATE_INSUFFICIENT_SPACE && (room == 0 || room < size);) {
        room = std::min(std::max<std::uint64_t>(packed.size() * kUsualRatio + kSlack, room * 2), size);
        to->clear();
        char* const bytes = to->extend(static_cast<std::size_t>(std::max<std::uint64_t>(room, 1)));
        result = libdeflate_zlib_decompress_ex(decompressor.get(), packed.data(), packed.size(), bytes,
                                               static_cast<std::size_t>(room), &used, &done);
    }
    if (result != LIBDEFLATE_SUCCESS || done != size)
        throw input_error("holds damaged compressed data");
    to->shorten(done);
}
