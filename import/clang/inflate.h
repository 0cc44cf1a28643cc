// Compressed parts of programs: names of functions and of files are mostly stored that way.
#pragma once

#include "import/clang/byte_buffer.h"

#include <cstdint>
#include <string_view>

/// Who finds out that the bytes which a stream unpacks to are damaged.
enum class checksum {
    verified, ///< the stream's own sum is compared
    ignored   ///< the caller has a check of its own that is as good, and saves the time
};

/// Replaces `*to` by what the zlib stream `packed` holds, which must be `size` bytes. Throws input_error
/// where it is not; a size that the stream cannot hold is refused before memory is asked for.
void inflate_exactly(std::string_view packed, std::uint64_t size, byte_buffer* to,
                     checksum sum = checksum::verified);
