#include "import/clang/indexed_profile.h"

#include "import/clang/byte_reader.h"
#include "import/clang/known_versions.h"
#include "import/clang/profile_variant.h"

constexpr std::uint64_t kBitmaps = 11; ///< first version with bitmaps
constexpr std::size_t kHeaderSizes[] = {40, 40, 40, 40, 48, 56, 64, 64, 72, 72}; ///< from the oldest on

[[noreturn]] static void damaged(const char* what) {
    throw input_error(std::string("is a damaged profile: ") + what);
}

static void read_data(std::string_view data, std::uint64_t name, bool bitmaps, counter_store* counters) {
    byte_reader reader(data);
    while (!reader.empty()) {
        const std::uint64_t structure = reader.u64();
        const std::uint64_t number = reader.u64();
        if (number > reader.left() / 8)
            damaged("the counters of a function reach beyond it");
        const std::string_view own = reader.bytes(number * 8);
        std::uint64_t* const sums = counters->counters_of(name, structure, own.size() / 8);
        for (std::size_t i = 0; sums && i < own.size() / 8; ++i)
            add_to_counter(&sums[i], little_endian_at<std::uint64_t>(own, i * 8));
        if (bitmaps) {
            const std::uint64_t bytes = reader.u64();
            if (bytes > reader.left() / 8)
                damaged("the bitmap of a function reaches beyond it");
            reader.skip(bytes * 8);
        }
        byte_reader values = reader;
        const std::uint32_t size = values.u32();
        if (size < 8)
            damaged("the values of a function have an impossible size");
        reader.skip(size);
    }
}

/// The version, checked; `reader` goes on behind the summary, and `*buckets_end` is the offset of the end
/// part.
static std::uint64_t read_head(byte_reader* reader, std::uint64_t* buckets_end) {
    reader->u64();
    const std::uint64_t version = checked_profile_version(reader->u64());
    if (version < kOldestIndexedProfile || version > kNewestIndexedProfile)
        unknown_profile_version(version > kNewestIndexedProfile, version);
    reader->u64();
    if (reader->u64() != 0)
        damaged("its kind of hash is unknown");
    *buckets_end = reader->u64();
    reader->skip(kHeaderSizes[version - kOldestIndexedProfile] - reader->offset());
    const std::uint64_t fields = reader->u64();
    const std::uint64_t entries = reader->u64();
    if (fields > reader->left() / 8 || entries > reader->left() / 24)
        damaged("its summary reaches beyond it");
    reader->skip(fields * 8);
    reader->skip(entries * 24);
    return version;
}

bool is_indexed_profile(std::string_view start) {
    return start.starts_with("\xfflprofi\x81");
}

void read_indexed_profile(std::string_view file, counter_store* counters,
                          const std::function<void(std::uint64_t hash, std::string_view name)>& on_name) {
    byte_reader reader(file);
    std::uint64_t buckets_end = 0;
    const bool bitmaps = read_head(&reader, &buckets_end) >= kBitmaps;
    if (buckets_end < reader.offset() || buckets_end > file.size())
        damaged("its table does not lie within it");
    byte_reader end(file.substr(static_cast<std::size_t>(buckets_end)));
    end.u64();
    const std::uint64_t entries = end.u64();
    byte_reader buckets(file.substr(0, static_cast<std::size_t>(buckets_end)));
    buckets.skip(reader.offset());
    for (std::uint64_t done = 0; done < entries;) {
        for (std::uint64_t items = buckets.u16(); items > 0; --items, ++done) {
            const std::uint64_t hash = buckets.u64();
            const std::uint64_t name_size = buckets.u64();
            const std::uint64_t data_size = buckets.u64();
            on_name(hash, buckets.bytes(name_size));
            read_data(buckets.bytes(data_size), hash, bitmaps, counters);
        }
    }
}
