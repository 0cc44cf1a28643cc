#include "import/clang/profile_names.h"

#include "import/clang/byte_reader.h"
#include "import/clang/inflate.h"

/// False where `on_name` asked to stop.
static bool split_names(std::string_view text, const std::function<bool(std::string_view)>& on_name) {
    while (!text.empty()) {
        const std::string_view name = text.substr(0, text.find('\1'));
        text.remove_prefix(name.size() == text.size() ? name.size() : name.size() + 1);
        if (!on_name(name))
            return false;
    }
    return true;
}

void for_each_name(std::string_view section, const std::function<bool(std::string_view)>& on_name) {
    std::string unpacked;
    byte_reader reader(section);
    for (reader.skip_zeros(); !reader.empty(); reader.skip_zeros()) {
        const std::uint64_t size = reader.leb();
        const std::uint64_t packed_size = reader.leb();
        std::string_view text = reader.bytes(packed_size == 0 ? size : packed_size);
        if (packed_size != 0) {
            inflate_exactly(text, size, &unpacked);
            text = unpacked;
        }
        if (!split_names(text, on_name))
            return;
    }
}
