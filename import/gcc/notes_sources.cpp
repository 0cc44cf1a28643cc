#include "import/gcc/notes_sources.h"

#include "common/file_ptr.h"
#include "common/little_endian.h"
#include "common/message.h"

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
    if (!stream)
        return bytes;
    char piece[16384];
    for (std::size_t n; (n = std::fread(piece, 1, sizeof piece, stream.get())) != 0;)
        bytes.insert(bytes.end(), piece, piece + n);
    if (std::ferror(stream.get()))
        end_with_error("cannot read %s: %s", printable(path).c_str(), std::strerror(errno));
    return bytes;
}

/// The name at `at`, by the length in front of it; empty when that fits nothing there. Lengths this small
/// have a zero byte, so none of the names that are tried holds another: together they are no longer than the
/// file.
static std::string_view name_at(const char* at, const char* end) {
    std::uint32_t length;
    std::memcpy(&length, at - sizeof length, sizeof length);
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
    bool directory = true; // the first name is that of the directory where the compiler ran
    for (const char* at = bytes.data() + std::min(bytes.size(), kNotesHead + 4); at < end; ++at) {
        at = static_cast<const char*>(std::memchr(at, '/', static_cast<std::size_t>(end - at)));
        if (!at)
            return;
        const std::string_view name = name_at(at, end);
        if (name.empty())
            continue;
        if (!directory)
            on_source(name);
        directory = false;
        at += name.size();
    }
}

/// Kinds from functions to the last that is known; all have a zero byte in front of their parts' numbers.
static bool is_record_kind(std::uint32_t kind) {
    return kind == 0x01000000 || (kind >= 0x01410000 && kind <= 0x01ff0000 && (kind & 0xffff) == 0);
}

bool are_cut_short(const std::string& notes, const compiler_version& version) {
    const std::vector<char> bytes = read_file(notes);
    const std::string_view text(bytes.data(), bytes.size());
    if (version.major < 9 || !text.starts_with("oncg") || text.size() < kNotesHead + 8)
        return false;
    const bool in_bytes = version.major >= 12;
    const std::uint64_t unit = in_bytes ? 1 : 4;
    const auto number_at = [text](std::uint64_t place) {
        return little_endian_at<std::uint32_t>(text, static_cast<std::size_t>(place));
    };
    std::uint64_t at = kNotesHead + (in_bytes ? 4 : 0);
    at += 4 + unit * number_at(at) + 4;
    while (at + 8 <= text.size()) {
        if (!is_record_kind(number_at(at)))
            return false;
        at += 8 + unit * number_at(at + 4);
    }
    return at != text.size();
}
