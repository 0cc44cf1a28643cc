#include "import/clang/file_bytes.h"

#include "import/clang/input_error.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

constexpr std::size_t kWindow = std::size_t{1} << 18;

file_bytes::file_bytes(const std::string& path) : descriptor_(open(path.c_str(), O_RDONLY | O_CLOEXEC)) {
    struct stat status = {};
    if (descriptor_ < 0)
        throw input_error(std::string("cannot be opened: ") + std::strerror(errno));
    if (fstat(descriptor_, &status) != 0 || !S_ISREG(status.st_mode)) {
        close(descriptor_);
        throw input_error("is not a regular file");
    }
    size_ = static_cast<std::uint64_t>(status.st_size);
}

file_bytes::~file_bytes() {
    close(descriptor_);
}

void file_bytes::read(std::uint64_t offset, std::size_t size, std::string* to) const {
    to->resize(size);
    for (std::size_t done = 0; done < size;) {
        const ssize_t got =
            pread(descriptor_, to->data() + done, size - done, static_cast<off_t>(offset + done));
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0)
            throw input_error(std::string("cannot be read: ") + std::strerror(errno));
        if (got == 0)
            throw input_error("became shorter while it was read");
        done += static_cast<std::size_t>(got);
    }
}

std::string_view file_bytes::at(std::uint64_t offset, std::uint64_t size) {
    if (offset > size_ || size > size_ - offset)
        throw input_error("ends in the middle");
    const bool inside = offset >= window_offset_ && offset - window_offset_ <= window_.size() &&
                        size <= window_.size() - (offset - window_offset_);
    if (!inside && size > kWindow) {
        read(offset, static_cast<std::size_t>(size), &large_);
        return large_;
    }
    if (!inside) {
        window_offset_ = offset;
        try {
            read(offset, static_cast<std::size_t>(std::min<std::uint64_t>(kWindow, size_ - offset)),
                 &window_);
        } catch (...) {
            window_.clear();
            throw;
        }
    }
    return std::string_view(window_).substr(static_cast<std::size_t>(offset - window_offset_),
                                            static_cast<std::size_t>(size));
}

std::string_view file_part::at(std::uint64_t offset, std::uint64_t size) const {
    if (offset > size_ || size > size_ - offset)
        throw input_error("ends in the middle");
    return file_->at(offset_ + offset, size);
}
