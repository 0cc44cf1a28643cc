#include "import/gcc/object_files.h"

#include "common/message.h"
#include "common/remedy.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

constexpr std::size_t kHeadSize = 12;
constexpr std::size_t kEndSize = 4;

std::string compiler_version::text() const {
    return "GCC " + std::to_string(major) + "." + std::to_string(minor);
}

static bool is_digit(char c) {
    return c >= '0' && c <= '9';
}

/// "B22*" is 12.2, "408*" is 4.8: the first character counts tens of the major number from A on, or is the
/// whole of it before GCC 5.
static compiler_version decode_version(std::string_view text) {
    if (!is_digit(text[1]) || !is_digit(text[2]))
        return {};
    const unsigned second = static_cast<unsigned>(text[1] - '0');
    const unsigned third = static_cast<unsigned>(text[2] - '0');
    if (is_digit(text[0]))
        return {static_cast<unsigned>(text[0] - '0'), second * 10 + third};
    if (text[0] < 'A' || text[0] > 'Z')
        return {};
    return {static_cast<unsigned>(text[0] - 'A') * 10 + second, third};
}

static std::optional<object_head> decode_head(std::array<char, kHeadSize> bytes, std::string_view magic) {
    const bool reversed = std::equal(magic.rbegin(), magic.rend(), bytes.begin());
    if (!reversed && !std::equal(magic.begin(), magic.end(), bytes.begin()))
        return std::nullopt;
    object_head head;
    std::memcpy(&head.stamp, bytes.data() + 8,
                sizeof head.stamp); // only compared with that of the other file
    if (reversed)
        std::reverse(bytes.begin() + 4, bytes.begin() + 8);
    head.version = decode_version(std::string_view(bytes.data() + 4, 4));
    return head;
}

[[noreturn]] static void fail(const std::string& path) {
    end_with_error("cannot read %s: %s", printable(path).c_str(), reason_of(errno).c_str());
}

/// A file that is open.
struct open_file {
    const std::string& path;
    int descriptor;

    bool is_regular(off_t* size) const {
        struct stat status;
        if (fstat(descriptor, &status) != 0)
            fail(path);
        *size = status.st_size;
        return S_ISREG(status.st_mode);
    }

    /// Reads `size` bytes at `offset`; false when there are fewer.
    bool read_at(char* bytes, std::size_t size, off_t offset) const {
        const ssize_t present = pread(descriptor, bytes, size, offset);
        if (present == -1)
            fail(path);
        return present == static_cast<ssize_t>(size);
    }
};

static std::optional<object_head> read_head(const std::string& path, std::string_view magic,
                                            bool to_the_end) {
    const int descriptor = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    if (descriptor == -1) {
        if (errno != ENOENT && errno != EACCES) // not the file's fault
            fail(path);
        return std::nullopt;
    }
    const open_file file = {path, descriptor};
    off_t size = 0;
    std::array<char, kHeadSize> bytes = {};
    std::array<char, kEndSize> end = {};
    bool complete = file.is_regular(&size) && file.read_at(bytes.data(), kHeadSize, 0);
    if (complete && to_the_end)
        complete = size >= static_cast<off_t>(kHeadSize) &&
                   file.read_at(end.data(), kEndSize, size - static_cast<off_t>(kEndSize)) &&
                   std::all_of(end.begin(), end.end(), [](char c) { return c == 0; });
    close(descriptor);
    return complete ? decode_head(bytes, magic) : std::nullopt;
}

std::optional<object_head> read_notes_head(const std::string& path) {
    const std::optional<object_head> head = read_head(path, "gcno", false);
    return head && head->version.major != 0 ? head : std::nullopt;
}

std::optional<object_head> read_counters_head(const std::string& path) {
    return read_head(path, "gcda", true);
}
