#include "import/clang/name_hash.h"

#include "import/clang/byte_reader.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <md5.h>

std::uint64_t name_hash(std::string_view text) {
    MD5_CTX context;
    MD5Init(&context);
    MD5Update(&context, reinterpret_cast<const std::uint8_t*>(text.data()), text.size());
    std::uint8_t digest[MD5_DIGEST_LENGTH];
    MD5Final(digest, &context);
    return little_endian_at<std::uint64_t>({reinterpret_cast<const char*>(digest), sizeof digest}, 0);
}

// The same as RFC 1321 has it, for several texts at once: each step of it waits for the one before, so that a
// processor has time for more of them.

namespace {

constexpr std::size_t kLanes = 8;
constexpr std::size_t kBlock = 64;

/// A number of each text.
using lane_numbers = std::uint32_t __attribute__((vector_size(kLanes * sizeof(std::uint32_t))));

using lane_state = std::array<lane_numbers, 4>;
using lane_block = std::array<std::array<std::uint32_t, kLanes>, kBlock / sizeof(std::uint32_t)>;

/// The whole parts of 2^32 |sin n|, n from 1 on.
constexpr std::uint32_t kSines[64] = {
    0xd76aa478, 0xe8c7b756, 0x242070db, 0xc1bdceee, 0xf57c0faf, 0x4787c62a, 0xa8304613, 0xfd469501,
    0x698098d8, 0x8b44f7af, 0xffff5bb1, 0x895cd7be, 0x6b901122, 0xfd987193, 0xa679438e, 0x49b40821,
    0xf61e2562, 0xc040b340, 0x265e5a51, 0xe9b6c7aa, 0xd62f105d, 0x02441453, 0xd8a1e681, 0xe7d3fbc8,
    0x21e1cde6, 0xc33707d6, 0xf4d50d87, 0x455a14ed, 0xa9e3e905, 0xfcefa3f8, 0x676f02d9, 0x8d2a4c8a,
    0xfffa3942, 0x8771f681, 0x6d9d6122, 0xfde5380c, 0xa4beea44, 0x4bdecfa9, 0xf6bb4b60, 0xbebfbc70,
    0x289b7ec6, 0xeaa127fa, 0xd4ef3085, 0x04881d05, 0xd9d4d039, 0xe6db99e5, 0x1fa27cf8, 0xc4ac5665,
    0xf4292244, 0x432aff97, 0xab9423a7, 0xfc93a039, 0x655b59c3, 0x8f0ccc92, 0xffeff47d, 0x85845dd1,
    0x6fa87e4f, 0xfe2ce6e0, 0xa3014314, 0x4e0811a1, 0xf7537e82, 0xbd3af235, 0x2ad7d2bb, 0xeb86d391,
};
constexpr unsigned kTurns[4][4] = {{7, 12, 17, 22}, {5, 9, 14, 20}, {4, 11, 16, 23}, {6, 10, 15, 21}};

} // namespace

static void mix_block(const lane_block& block, lane_state* state) {
    auto [a, b, c, d] = *state;
    for (unsigned i = 0; i < 64; ++i) {
        const unsigned round = i / 16;
        const unsigned number = round == 0 ? i : round == 1 ? 5 * i + 1 : round == 2 ? 3 * i + 5 : 7 * i;
        lane_numbers word;
        std::memcpy(&word, block[number % 16].data(), sizeof word);
        lane_numbers mixed = round == 0   ? d ^ (b & (c ^ d))
                             : round == 1 ? c ^ (d & (b ^ c))
                             : round == 2 ? b ^ c ^ d
                                          : c ^ (b | ~d);
        mixed += a + word + kSines[i];
        const unsigned turn = kTurns[round][i % 4];
        a = d;
        d = c;
        c = b;
        b += (mixed << turn) | (mixed >> (32 - turn));
    }
    (*state)[0] += a;
    (*state)[1] += b;
    (*state)[2] += c;
    (*state)[3] += d;
}

/// With the byte and the length that end the text.
static std::size_t number_of_blocks(std::string_view text) {
    return (text.size() + 1 + sizeof(std::uint64_t) + kBlock - 1) / kBlock;
}

static void fill_lane(std::string_view text, std::size_t number, std::size_t lane, lane_block* block) {
    char bytes[kBlock] = {};
    const std::size_t begin = std::min(number * kBlock, text.size());
    const std::size_t size = std::min(text.size() - begin, kBlock);
    if (size != 0)
        std::memcpy(bytes, text.data() + begin, size);
    if (size < kBlock && begin == number * kBlock)
        bytes[size] = '\x80';
    for (std::size_t i = 0; i < block->size(); ++i)
        (*block)[i][lane] = little_endian_at<std::uint32_t>({bytes, kBlock}, i * sizeof(std::uint32_t));
    if (number + 1 != number_of_blocks(text))
        return;
    const std::uint64_t bits = std::uint64_t{text.size()} * 8;
    (*block)[14][lane] = static_cast<std::uint32_t>(bits);
    (*block)[15][lane] = static_cast<std::uint32_t>(bits >> 32);
}

/// At most kLanes texts.
static void hash_lanes(const std::string_view* texts, std::size_t number, std::uint64_t* hashes) {
    const lane_numbers zero = {};
    lane_state state = {zero + 0x67452301U, zero + 0xefcdab89U, zero + 0x98badcfeU, zero + 0x10325476U};
    lane_block block = {};
    std::size_t blocks = 0;
    for (std::size_t i = 0; i < number; ++i)
        blocks = std::max(blocks, number_of_blocks(texts[i]));
    for (std::size_t done = 0; done < blocks; ++done) {
        for (std::size_t i = 0; i < number; ++i) {
            if (done < number_of_blocks(texts[i]))
                fill_lane(texts[i], done, i, &block);
        }
        mix_block(block, &state);
        for (std::size_t i = 0; i < number; ++i) {
            if (done + 1 == number_of_blocks(texts[i]))
                hashes[i] = state[0][i] | std::uint64_t{state[1][i]} << 32;
        }
    }
}

void hash_names(std::vector<std::string_view>* names, std::vector<std::uint64_t>* hashes) {
    // Those that are hashed together should have as many blocks.
    std::sort(names->begin(), names->end(),
              [](std::string_view a, std::string_view b) { return a.size() < b.size(); });
    hashes->resize(names->size());
    for (std::size_t i = 0; i < names->size(); i += kLanes)
        hash_lanes(names->data() + i, std::min(names->size() - i, kLanes), hashes->data() + i);
}
