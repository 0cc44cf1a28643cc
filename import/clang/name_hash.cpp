#include "import/clang/name_hash.h"

#include "common/little_endian.h"

#include <cstring>
#include <md5.h>

constexpr std::size_t kSizeBytes = 8; ///< at the end of the padding: the number of bits

static void transform(MD5_CTX* context, const char* block) {
    MD5Transform(context->state, reinterpret_cast<const std::uint8_t*>(block));
}

/// Names fill one to three blocks: the library's own padding, which goes on with any text, takes much of the
/// time that hashing them does.
std::uint64_t name_hash(std::string_view text) {
    MD5_CTX context;
    MD5Init(&context);
    const std::uint64_t bits = std::uint64_t{text.size()} * 8;
    for (; text.size() >= MD5_BLOCK_LENGTH; text.remove_prefix(MD5_BLOCK_LENGTH))
        transform(&context, text.data());
    char end[MD5_BLOCK_LENGTH * 2] = {};
    if (!text.empty())
        std::memcpy(end, text.data(), text.size());
    end[text.size()] = '\x80';
    const bool fits = text.size() + 1 + kSizeBytes <= MD5_BLOCK_LENGTH;
    const std::size_t size = fits ? MD5_BLOCK_LENGTH : sizeof end;
    store_number(end + size - kSizeBytes, bits, kSizeBytes);
    transform(&context, end);
    if (!fits)
        transform(&context, end + MD5_BLOCK_LENGTH);
    return context.state[0] | std::uint64_t{context.state[1]} << 32;
}
