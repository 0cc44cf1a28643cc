#include "import/clang/inflate.h"

#include "import/clang/input_error.h"

#include <algorithm>
#include <limits>
#include <new>
#include <zlib.h>

/// No stream of n bytes unpacks to more than 1032 n.
constexpr std::uint64_t kLargestRatio = 1032;
constexpr std::uint64_t kSlack = 64;

/// Names unpack to five to twenty times their size. More memory is taken only while a stream goes on.
constexpr std::uint64_t kUsualRatio = 32;

namespace {

/// A zlib stream that is being unpacked.
class stream {
  public:
    stream(std::string_view packed, checksum sum) {
        state_.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(packed.data())); // zlib only reads it
        state_.avail_in = static_cast<uInt>(packed.size());
        if (inflateInit(&state_) != Z_OK)
            throw std::bad_alloc();
        if (sum == checksum::ignored)
            inflateValidate(&state_, 0);
    }
    ~stream() { inflateEnd(&state_); }
    stream(const stream&) = delete;
    stream& operator=(const stream&) = delete;

    /// Unpacks up to `size` bytes and returns how many came. `*ended`: the stream is whole and at its end.
    std::size_t unpack(char* to, std::size_t size, bool* ended) {
        state_.next_out = reinterpret_cast<Bytef*>(to);
        state_.avail_out = static_cast<uInt>(size);
        const int status = inflate(&state_, Z_NO_FLUSH);
        if (status == Z_MEM_ERROR)
            throw std::bad_alloc();
        *ended = status == Z_STREAM_END;
        return size - state_.avail_out;
    }

  private:
    z_stream state_ = {};
};

} // namespace

void inflate_exactly(std::string_view packed, std::uint64_t size, byte_buffer* to, checksum sum) {
    constexpr std::uint64_t largest = std::numeric_limits<uInt>::max();
    if (packed.size() > largest || size > largest || size > packed.size() * kLargestRatio + kSlack)
        throw input_error("holds compressed data of an impossible size");
    stream source(packed, sum);
    to->clear();
    std::size_t done = 0;
    bool ended = false;
    while (!ended) {
        const std::uint64_t room = std::max<std::uint64_t>(packed.size() * kUsualRatio, done * 2) + kSlack;
        // One byte more than there should be shows a stream that goes on.
        to->shorten(done);
        const std::size_t free = static_cast<std::size_t>(std::min(room, size + 1)) - done;
        const std::size_t got = source.unpack(to->extend(free), free, &ended);
        done += got;
        if (!ended && (got == 0 || done > size))
            break;
    }
    if (!ended || done != size)
        throw input_error("holds damaged compressed data");
    to->shorten(done);
}
