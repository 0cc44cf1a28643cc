#include "import/gcc/notes_sources.h"

#include "common/file_ptr.h"
#include "common/little_endian.h"
#include "common/message.h"
#include "common/remedy.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <vector>

/// Of the head of a file of notes: magic number, version, stamp, checksum.
constexpr std::size_t kNotesHead = 12;

constexpr std::uint32_t kLongestName = 65535;

static std::vector<char> read_file(const std::string& path) {
    std::vector<char> bytes;
    const file_ptr stream(std::fopen(path.c_str(), "rb"));
    if (!stream && (errno == ENOENT || errno == EACCES))
        return bytes;
    char piece[16384];
    for (std::size_t n; stream && (n = std::fread(piece, 1, sizeof piece, stream.get())) != 0;)
        bytes.insert(bytes.end(), piece, piece + n);
    if (!stream || std::ferror(stream.get()))
        end_with_error("cannot read %s: %s", printable(path).c_str(), reason_of(errno).c_str());
    return bytes;
}

/// The name at `at`, by the length in front of it; empty when that fits nothing there. Lengths this small
/// have a zero byte, so none of the names that are tried holds another: together they are no longer than the
/// file.
static std::string_view name_at(const char* at, const char* end, bool big_endian) {
    std::uint32_t length = little_endian_at<std::uint32_t>({at - 4, 4}, 0);
    if (big_endian)
        length = __builtin_bswap32(length);
    if (length > kLongestName)
        return {};
    const std::size_t available = std::min<std::size_t>(kLongestName, static_cast<std::size_t>(end - at));
    const void* const zero = std::memchr(at, 0, available);
    if (!zero)
        return {};
    const std::size_t size = static_cast<std::size_t>(static_cast<const char*>(zero) - at);
    const bool fits = length == size + 1 || length == (size + 4) / 4;
    return fits ? std::string_view(at, size) : std::string_view();
}

void find_sources(const std::string& notes, const std::function<void(std::string_view)>& on_source) {
    const std::vector<char> bytes = read_file(notes);
    const char* const end = bytes.data() + bytes.size();
    const bool big_endian = !bytes.empty() && bytes.front() == 'g'; // of "gcno"
    bool directory = true; // the first name is that of the directory where the compiler ran
    for (const char* at = bytes.data() + std::min(bytes.size(), kNotesHead + 4); at < end; ++at) {
        at = static_cast<const char*>(std::memchr(at, '/', static_cast<std::size_t>(end - at)));
        if (!at)
            return;
        const std::string_view name = name_at(at, end, big_endian);
        if (name.empty())
            continue;
        if (!directory)
            on_source(name);
        directory = false;
        at += name.size();
    }
}
