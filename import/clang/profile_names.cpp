#include "import/clang/profile_names.h"

bool name_blocks::next() {
    reader_.skip_zeros();
    if (reader_.empty())
        return false;
    byte_reader start = reader_;
    size_ = reader_.leb();
    const std::uint64_t packed_size = reader_.leb();
    packed_ = packed_size != 0;
    bytes_ = reader_.bytes(packed_ ? packed_size : size_);
    stored_ = start.bytes(reader_.offset() - start.offset());
    return true;
}

std::string_view name_blocks::text(checksum sum) const {
    if (!packed_)
        return bytes_;
    inflate_exactly(bytes_, size_, &memory_, sum);
    return memory_.view();
}
