#include "import/clang/raw_profile.h"

#include "import/clang/byte_reader.h"
#include "import/clang/known_versions.h"
#include "import/clang/profile_variant.h"

namespace {

/// Offsets in the header; 0 stands for a field that the version does not have.
struct header_layout {
    std::size_t id_bytes;
    std::size_t records; ///< the next three fields are the padding, the counters and their padding
    std::size_t bitmap_bytes;
    std::size_t name_bytes; ///< the next field is the address of the counters
    std::size_t tables;     ///< the next field is the bytes of their names
    std::size_t size;
};

struct record_layout {
    std::size_t counters; ///< number of them
    std::size_t sites;
    std::size_t size;
};

constexpr header_layout kHeader5 = {0, 16, 0, 48, 0, 80};
constexpr header_layout kHeader7 = {16, 24, 0, 56, 0, 88};
constexpr header_layout kHeader9 = {16, 24, 56, 72, 0, 112};
constexpr header_layout kHeader10 = {16, 24, 56, 72, 104, 128};
constexpr record_layout kRecord5[2] = {{28, 32, 40}, {40, 44, 48}};
constexpr record_layout kRecord9[2] = {{32, 36, 48}, {48, 52, 64}};
constexpr std::size_t kCountersAt = 16; ///< in every record
constexpr std::size_t kAhead = 8;       ///< records between the one that is read and the one that is prepared

constexpr std::uint64_t kRelative = 8;    ///< first version with addresses from the record on
constexpr std::uint64_t kCompleteIds = 8; ///< before, GNU ld let programs go without, but not libraries

/// One profile of a file.
class profile_reader {
  public:
    profile_reader(byte_reader* file, const raw_profile_sinks& sinks) : file_(file), sinks_(sinks) {}
    void read();

  private:
    std::uint64_t field(std::size_t offset) const {
        return offset == 0 ? 0 : little_endian_at<std::uint64_t>(header_, offset);
    }
    std::string_view padded(std::uint64_t size);
    void read_header();
    void read_ids();
    void read_counters();
    void add_record(std::string_view record, std::uint64_t base);
    void skip_tables();
    void skip_values() const;

    byte_reader* file_;
    const raw_profile_sinks& sinks_;
    bool wide_ = false; ///< of a 64-bit program
    std::uint64_t version_ = 0;
    std::size_t counter_size_ = 8;
    std::uint64_t used_counters_ = 0; ///< of the records so far
    const header_layout* layout_ = nullptr;
    const record_layout* record_ = nullptr;
    std::string_view header_;
    std::string_view records_;
    std::string_view counters_;
};

[[noreturn]] void damaged(const char* what) {
    throw input_error(std::string("is a damaged profile: ") + what);
}

void profile_reader::read_header() {
    byte_reader start = *file_;
    const std::string_view magic = start.bytes(8);
    if (!is_raw_profile(magic))
        damaged("what follows its end is no profile");
    if (magic[0] != '\x81')
        throw input_error(
            "is a big-endian profile, which is not supported; give the output of llvm-cov export");
    wide_ = magic[1] == 'r';
    const std::uint64_t variant = start.u64();
    version_ = checked_profile_version(variant);
    if (version_ < kOldestRawProfile || version_ == kUnreleasedRawProfile || version_ > kNewestRawProfile)
        unknown_profile_version(version_ > kNewestRawProfile, version_);
    counter_size_ = has_byte_counters(variant) ? 1 : 8;
    layout_ = version_ < 7 ? &kHeader5 : version_ < 9 ? &kHeader7 : version_ < 10 ? &kHeader9 : &kHeader10;
    record_ = &(version_ < 9 ? kRecord5 : kRecord9)[wide_ ? 1 : 0];
    header_ = file_->bytes(layout_->size);
}

/// `size` bytes, behind which the file goes on at a multiple of 8.
std::string_view profile_reader::padded(std::uint64_t size) {
    const std::string_view bytes = file_->bytes(size);
    file_->align_8();
    return bytes;
}

void profile_reader::read_ids() {
    byte_reader ids(file_->bytes(field(layout_->id_bytes)));
    while (!ids.empty()) {
        const std::string_view id = ids.bytes(ids.u64());
        ids.align_8();
        if (version_ >= kCompleteIds)
            sinks_.on_id(id);
    }
}

void profile_reader::add_record(std::string_view record, std::uint64_t base) {
    const std::uint64_t address = wide_ ? little_endian_at<std::uint64_t>(record, kCountersAt)
                                        : little_endian_at<std::uint32_t>(record, kCountersAt);
    const std::uint64_t difference = address - base;
    const std::uint64_t offset = wide_ ? difference : difference & 0xffffffff;
    const std::size_t number = little_endian_at<std::uint32_t>(record, record_->counters);
    if (number == 0 || offset > counters_.size() ||
        number > (counters_.size() - static_cast<std::size_t>(offset)) / counter_size_)
        damaged("the counters of a function do not lie within it");
    used_counters_ += number;
    if (used_counters_ > counters_.size() / counter_size_) // or a small file could take any time and memory
        damaged("functions share counters");
    std::uint64_t* const sums = sinks_.counters->counters_of(
        little_endian_at<std::uint64_t>(record, 0), little_endian_at<std::uint64_t>(record, 8), number);
    if (!sums)
        return;
    const std::string_view own = counters_.substr(static_cast<std::size_t>(offset), number * counter_size_);
    for (std::size_t i = 0; i < number; ++i)
        add_to_counter(&sums[i], counter_size_ == 8 ? little_endian_at<std::uint64_t>(own, i * 8)
                                 : own[i] == 0      ? 1
                                                    : 0);
}

void profile_reader::read_counters() {
    const std::uint64_t number = field(layout_->records);
    const std::uint64_t counters = field(layout_->records + 16);
    if (number == 0 && counters != 0)
        throw input_error("is a correlated profile, whose functions are in the program's debug information; "
                          "give the output of llvm-cov export");
    if (number > file_->left() / record_->size)
        damaged("it ends in the middle");
    records_ = file_->bytes(number * record_->size);
    file_->skip(field(layout_->records + 8));
    if (counters > file_->left() / counter_size_)
        damaged("it ends in the middle");
    counters_ = file_->bytes(counters * counter_size_);
    file_->skip(field(layout_->records + 24));
    std::uint64_t base = field(layout_->name_bytes + 8);
    for (std::size_t at = 0; at < records_.size(); at += record_->size) {
        const std::size_t ahead = at + kAhead * record_->size;
        if (ahead < records_.size())
            sinks_.counters->prepare(little_endian_at<std::uint64_t>(records_, ahead));
        add_record(records_.substr(at, record_->size), base);
        base -= version_ < kRelative ? 0 : record_->size;
    }
}

void profile_reader::skip_tables() {
    if (layout_->tables == 0)
        return;
    const std::uint64_t tables = field(layout_->tables);
    const std::uint64_t size = wide_ ? 24 : 16;
    if (tables > file_->left() / size)
        damaged("it ends in the middle");
    padded(tables * size);
    padded(field(layout_->tables + 8));
}

void profile_reader::skip_values() const {
    const std::size_t site_bytes = version_ < 10 ? 4 : 6;
    for (std::size_t at = 0; at < records_.size(); at += record_->size) {
        const std::string_view sites = records_.substr(at + record_->sites, site_bytes);
        if (sites.find_first_not_of('\0') == std::string_view::npos)
            continue;
        byte_reader chunk = *file_;
        const std::uint32_t size = chunk.u32();
        if (size < 8 || size % 8 != 0)
            damaged("the values of a function have an impossible size");
        file_->skip(size);
    }
}

void profile_reader::read() {
    read_header();
    read_ids();
    read_counters();
    if (layout_->bitmap_bytes != 0) {
        file_->skip(field(layout_->bitmap_bytes));
        file_->skip(field(layout_->bitmap_bytes + 8));
    }
    const std::string_view names = padded(field(layout_->name_bytes));
    sinks_.on_names(names);
    skip_tables();
    skip_values();
}

} // namespace

bool is_raw_profile(std::string_view start) {
    if (start.size() < 8)
        return false;
    for (const char* magic : {"\x81rforpl\xff", "\x81Rforpl\xff", "\xfflprofr\x81", "\xfflprofR\x81"}) {
        if (start.starts_with(magic))
            return true;
    }
    return false;
}

void read_raw_profile(std::string_view file, const raw_profile_sinks& sinks) {
    byte_reader reader(file);
    for (; !reader.empty(); reader.skip_zeros())
        profile_reader(&reader, sinks).read();
}
