#include "profile/dpi_reader.h"

#include "profile/checked_io.h"

#include <algorithm>
#include <cstring>

DPI_READER::DPI_READER(std::FILE* stream, const char* fileName) : stream_(stream) {
    checked_fseek(stream, 0, SEEK_END, fileName);
    size_ = static_cast<std::uint64_t>(checked_ftell(stream, fileName));
}

const unsigned char* DPI_READER::peek(std::uint64_t position, std::size_t* available, const char* fileName) {
    const std::uint64_t block = position / kBlockSize;
    const std::uint64_t start = block * kBlockSize;
    const std::size_t length = static_cast<std::size_t>(std::min<std::uint64_t>(kBlockSize, size_ - start));
    slot& cached = slots_[block % kSlots];
    if (cached.block != block) {
        if (!cached.bytes)
            cached.bytes = std::make_unique<unsigned char[]>(kBlockSize);
        cached.block = ~std::uint64_t{0};
        checked_fseek(stream_, static_cast<long>(start), SEEK_SET, fileName);
        checked_fread(cached.bytes.get(), 1, length, stream_, fileName);
        cached.block = block;
    }
    const std::size_t skipped = static_cast<std::size_t>(position - start);
    *available = length - skipped;
    return cached.bytes.get() + skipped;
}

void DPI_READER::read(std::uint64_t position, void* buffer, std::size_t count, const char* fileName) {
    if (position > size_ || count > size_ - position)
        checked_short_read(fileName);
    unsigned char* out = static_cast<unsigned char*>(buffer);
    while (count > 0) {
        std::size_t available = 0;
        const unsigned char* bytes = peek(position, &available, fileName);
        const std::size_t piece = std::min(available, count);
        std::memcpy(out, bytes, piece);
        out += piece;
        position += piece;
        count -= piece;
    }
}
