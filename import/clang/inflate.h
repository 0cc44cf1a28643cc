// Compressed parts of programs: names of functions and of files are mostly stored that way.
#pragma once

#include "import/clang/byte_buffer.h"

#include <cstdint>
#include <string_view>

/// Replaces `*to` by what the zlib stream `packed` holds, which must be `size` bytes. Throws input_error
/// where it is not; a size that the stream cannot hold is refused before memory is asked for.
void inflate_exactly(std::string_view packed, std::uint64_t size, byte_buffer* to);
