#include "import/clang/file_bytes.h"

#include "import/clang/input_error.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

constexpr std::uint64_t kFirstWindow = 4096;
constexpr std::uint64_t kLargestWindow = std::uint64_t{1} << 18;

[[noreturn]] static void cannot_open() {
    const std::string text = std::string("cannot be opened: ") + std::strerror(errno);
    if (errno == EACCES || errno == EPERM)
        throw not_of_interest(text);
    throw file_failure(text);
}

file_bytes::file_bytes(const std::string& path)
    : descriptor_(open(path.c_str(), O_RDONLY | O_CLOEXEC)), next_window_(kFirstWindow) {
    if (descriptor_ < 0)
        cannot_open();
    struct stat status = {};
    if (fstat(descriptor_, &status) != 0 || !S_ISREG(status.st_mode)) {
        close(descriptor_);
        throw file_failure("is not a regular file");
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
            throw file_failure(std::string("cannot be read: ") + std::strerror(errno));
        if (got == 0)
            throw file_failure("became shorter while it was read");
        done += static_cast<std::size_t>(got);
    }
}

std::string_view file_bytes::at(std::uint64_t offset, std::uint64_t size) {
    if (offset > size_ || size > size_ - offset)
        throw input_error("ends in the middle");
    const bool inside = offset >= window_offset_ && offset - window_offset_ <= window_.size() &&
                        size <= window_.size() - (offset - window_offset_);
    if (!inside && size > next_window_) {
        read(offset, static_cast<std::size_t>(size), &large_);
        return large_;
    }
    if (!inside) {
        window_.clear(); // where reading fails
        std::string bytes = std::move(window_);
        read(offset, static_cast<std::size_t>(std::min(next_window_, size_ - offset)), &bytes);
        window_ = std::move(bytes);
        window_offset_ = offset;
        next_window_ = std::min(next_window_ * 8, kLargestWindow);
    }
    return std::string_view(window_).substr(static_cast<std::size_t>(offset - window_offset_),
                                            static_cast<std::size_t>(size));
}

std::string_view file_part::at(std::uint64_t offset, std::uint64_t size) const {
    if (offset > size_ || size > size_ - offset)
        throw input_error("ends in the middle");
    return file_->at(offset_ + offset, size);
}
