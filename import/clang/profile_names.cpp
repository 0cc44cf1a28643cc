#include "import/clang/profile_names.h"

#include "import/clang/byte_reader.h"
#include "import/clang/inflate.h"

static void split_names(std::string_view text, const std::function<void(std::string_view)>& on_name) {
    while (!text.empty()) {
        const std::string_view name = text.substr(0, text.find('\1'));
        text.remove_prefix(name.size() == text.size() ? name.size() : name.size() + 1);
        on_name(name);
    }
}

void for_each_name(std::string_view section, const std::function<void(std::string_view)>& on_name) {
    std::string unpacked;
    byte_reader reader(section);
    for (reader.skip_zeros(); !reader.empty(); reader.skip_zeros()) {
        const std::uint64_t size = reader.leb();
        const std::uint64_t packed_size = reader.leb();
        if (packed_size == 0) {
            split_names(reader.bytes(size), on_name);
            continue;
        }
        inflate_exactly(reader.bytes(packed_size), size, &unpacked);
        split_names(unpacked, on_name);
    }
}
