#include "import/gcc/object_records.h"

#include "common/file_ptr.h"
#include "common/little_endian.h"
#include "common/message.h"
#include "common/remedy.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <string_view>

constexpr std::uint32_t kFunction = 0x01000000;
constexpr std::uint32_t kArcs = 0x01430000; ///< the last kind of a function's notes in front of its lines
constexpr std::uint64_t kHeadSize = 12;
constexpr object_records kCut = {true, std::nullopt};

namespace {

/// Reads one of the files from its start to its end.
class record_reader {
  public:
    record_reader(const std::string& path, const compiler_version& version)
        : path_(path), stream_(std::fopen(path.c_str(), "rb")), in_bytes_(version.major >= 12) {
        if (!stream_ && errno != ENOENT && errno != EACCES) // not the file's fault
            fail();
    }

    /// Whether the file begins with `magic` in this order of bytes.
    bool begins(std::string_view magic) {
        char start[4];
        if (!stream_)
            return false;
        const std::size_t size = std::fread(start, 1, sizeof start, stream_.get());
        check();
        return magic == std::string_view(start, size);
    }

    /// Goes behind the rest of the head and the checksum.
    bool skip_head() { return skip(kHeadSize - 4 + (in_bytes_ ? 4 : 0)); }

    /// The next number; false when it is not there in full.
    bool number(std::uint32_t* value) {
        char bytes[4];
        last_size_ = std::fread(bytes, 1, sizeof bytes, stream_.get());
        if (last_size_ != sizeof bytes) {
            check();
            return false;
        }
        *value = little_endian_at<std::uint32_t>({bytes, sizeof bytes}, 0);
        return true;
    }

    /// Whether the file ended in front of the number that was not there.
    bool at_end() const { return last_size_ == 0; }

    /// Goes behind a length and what it counts; false when that is not there in full.
    bool skip_counted() {
        std::uint32_t length = 0;
        if (!number(&length))
            return false;
        return length > 0x7fffffff || skip(std::uint64_t{length} * (in_bytes_ ? 1 : 4));
    }

    bool skip(std::uint64_t size) {
        char piece[4096];
        while (size != 0) {
            const std::size_t wanted = static_cast<std::size_t>(std::min<std::uint64_t>(size, sizeof piece));
            if (std::fread(piece, 1, wanted, stream_.get()) != wanted) {
                check();
                return false;
            }
            size -= wanted;
        }
        return true;
    }

  private:
    [[noreturn]] void fail() const {
        end_with_error("cannot read %s: %s", printable(path_).c_str(), reason_of(errno).c_str());
    }
    void check() const {
        if (std::ferror(stream_.get()))
            fail();
    }

    const std::string& path_;
    file_ptr stream_;
    bool in_bytes_;
    std::size_t last_size_ = 0;
};

} // namespace

/// Kinds from functions to the last that is known; all have a zero byte in front of their parts' numbers.
static bool is_notes_kind(std::uint32_t kind) {
    return kind == kFunction || (kind >= 0x01410000 && kind <= 0x01ff0000 && (kind & 0xffff) == 0);
}

object_records read_notes_records(const std::string& path, const compiler_version& version) {
    record_reader reader(path, version);
    std::uint32_t word = 0;
    if (version.major < 9 || !reader.begins("oncg"))
        return {};
    if (!reader.skip_head() || !reader.skip_counted() || !reader.number(&word))
        return kCut;
    std::uint32_t functions = 0;
    std::uint32_t last = 0;
    for (std::uint32_t kind = 0; reader.number(&kind); last = kind) {
        if (!is_notes_kind(kind))
            return {};
        functions += kind == kFunction ? 1 : 0;
        if (!reader.skip_counted())
            return kCut;
    }
    if (!reader.at_end() || (last != 0 && last <= kArcs))
        return kCut;
    return {false, functions};
}

object_records read_counters_records(const std::string& path, const compiler_version& version) {
    record_reader reader(path, version);
    if (version.major < 9 || !reader.begins("adcg"))
        return {};
    if (!reader.skip_head())
        return kCut;
    std::uint32_t functions = 0;
    for (std::uint32_t kind = 0; reader.number(&kind);) {
        if (kind == 0)
            return {false, functions};
        functions += kind == kFunction ? 1 : 0;
        if (!reader.skip_counted())
            break;
    }
    return kCut;
}
