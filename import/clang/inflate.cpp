#include "import/clang/inflate.h"

#include "import/clang/input_error.h"

#include <limits>
#include <new>
#include <zlib.h>

/// No stream of n bytes unpacks to more than 1032 n.
constexpr std::uint64_t kLargestRatio = 1032;
constexpr std::uint64_t kSlack = 64;

void inflate_exactly(std::string_view packed, std::uint64_t size, std::string* to) {
    constexpr std::uint64_t largest = std::numeric_limits<std::uint64_t>::max() / kLargestRatio - kSlack;
    if (packed.size() > largest || size > packed.size() * kLargestRatio + kSlack)
        throw input_error("holds compressed data of an impossible size");
    to->resize(static_cast<std::size_t>(size));
    uLongf unpacked = static_cast<uLongf>(size);
    const int status = uncompress(reinterpret_cast<Bytef*>(to->data()), &unpacked,
                                  reinterpret_cast<const Bytef*>(packed.data()), packed.size());
    if (status == Z_MEM_ERROR)
        throw std::bad_alloc();
    if (status != Z_OK || unpacked != size)
        throw input_error("holds damaged compressed data");
}
