#include "import/clang/file_bytes.h"

#include "common/remedy.h"
#include "import/clang/input_error.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

constexpr std::uint64_t kFirstWindow = 4096;
constexpr std::uint64_t kLargestWindow = std::uint64_t{1} << 15;

[[noreturn]] static void cannot_open() {
    const std::string text = std::string("cannot be opened: ") + reason_of(errno);
    if (errno == EACCES || errno == EPERM || errno == ENOENT)
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
        throw file_failure("is not a regular file; name one");
    }
    size_ = static_cast<std::uint64_t>(status.st_size);
}

file_bytes::~file_bytes() {
    close(descriptor_);
}

void file_bytes::read(std::uint64_t offset, char* to, std::size_t size) const {
    for (std::size_t done = 0; done < size;) {
        const ssize_t got = pread(descriptor_, to + done, size - done, static_cast<off_t>(offset + done));
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0)
            throw file_failure(std::string("cannot be read: ") + reason_of(errno));
        if (got == 0)
            throw file_failure("became shorter while it was read; wait until nothing writes it");
        done += static_cast<std::size_t>(got);
    }
}

/// Makes the window hold the bytes, unless they are too many for it. Windows that follow close upon each
/// other become larger.
bool file_bytes::in_window(std::uint64_t offset, std::uint64_t size) {
    if (offset > size_ || size > size_ - offset)
        throw input_error("ends in the middle");
    if (offset >= window_offset_ && offset - window_offset_ <= window_.size() &&
        size <= window_.size() - (offset - window_offset_))
        return true;
    if (size > next_window_)
        return false;
    const bool close = offset < window_offset_ + kLargestWindow && window_offset_ < offset + kLargestWindow;
    const std::uint64_t wanted = close ? next_window_ : std::max(size, kFirstWindow);
    const std::size_t taken = static_cast<std::size_t>(std::min(wanted, size_ - offset));
    window_.clear();
    window_offset_ = offset;
    char* const bytes = window_.extend(taken);
    window_.shorten(0); // where reading fails
    read(offset, bytes, taken);
    window_.extend(taken);
    next_window_ = std::min(wanted * 8, kLargestWindow);
    return true;
}

std::string_view file_bytes::at(std::uint64_t offset, std::uint64_t size) {
    if (in_window(offset, size))
        return window_.view().substr(static_cast<std::size_t>(offset - window_offset_),
                                     static_cast<std::size_t>(size));
    large_.clear();
    read(offset, large_.extend(static_cast<std::size_t>(size)), static_cast<std::size_t>(size));
    return large_.view();
}

void file_bytes::append(std::uint64_t offset, std::uint64_t size, byte_buffer* to) {
    if (in_window(offset, size))
        return to->append(at(offset, size));
    const std::size_t before = to->size();
    char* const bytes = to->extend(static_cast<std::size_t>(size));
    to->shorten(before); // where reading fails
    read(offset, bytes, static_cast<std::size_t>(size));
    to->extend(static_cast<std::size_t>(size));
}

std::string_view file_part::at(std::uint64_t offset, std::uint64_t size) const {
    if (offset > size_ || size > size_ - offset)
        throw input_error("ends in the middle");
    return file_->at(offset_ + offset, size);
}

void file_part::append(std::uint64_t offset, std::uint64_t size, byte_buffer* to) const {
    if (offset > size_ || size > size_ - offset)
        throw input_error("ends in the middle");
    file_->append(offset_ + offset, size, to);
}
