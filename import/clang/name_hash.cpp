#include "import/clang/name_hash.h"

#include "import/clang/byte_reader.h"

#include <md5.h>

std::uint64_t name_hash(std::string_view text) {
    MD5_CTX context;
    MD5Init(&context);
    MD5Update(&context, reinterpret_cast<const std::uint8_t*>(text.data()), text.size());
    std::uint8_t digest[MD5_DIGEST_LENGTH];
    MD5Final(digest, &context);
    return little_endian_at<std::uint64_t>({reinterpret_cast<const char*>(digest), sizeof digest}, 0);
}
