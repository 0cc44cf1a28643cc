#include "profile/dpi_cursor.h"

#include "common/little_endian.h"
#include "common/platform.h"
#include "common/printable.h"
#include "common/remedy.h"
#include "profile/checked_io.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

/// Names may lie in each other, but no profile has so many times its bytes in names.
constexpr std::uint64_t kMostNames = 16;

bool DPI_CURSOR::fail(const std::string& what) {
    error_ = what;
    return false;
}

bool DPI_CURSOR::open(const std::string& path, const struct stat* locked) {
    struct stat status;
    if (stat(path.c_str(), &status) != 0)
        return fail("cannot open " + printable(path) + ": " + reason_of(errno));
    if (!S_ISREG(status.st_mode))
        return fail(printable(path) + " is not a regular file; name a dynamic profile");
    const bool is_locked = locked && locked->st_ino == status.st_ino && locked->st_dev == status.st_dev;
    errno = 0;
    file_ptr stream(is_locked ? std::fopen(path.c_str(), "rb") : checked_fopen(path.c_str(), "rb"));
    if (!stream)
        return fail("cannot open " + printable(path) + ": " + reason_of(errno));
    return open(std::move(stream), path);
}

bool DPI_CURSOR::open(file_ptr stream, const std::string& name) {
    name_ = printable(name);
    stream_ = std::move(stream);
    struct stat status;
    if (fstat(fileno(stream_.get()), &status) != 0)
        return fail("cannot examine " + name_ + ": " + reason_of(errno));
    modified_ = modification_time(status);
    std::setvbuf(stream_.get(), nullptr, _IONBF, 0); // the reader's blocks are the buffer
    reader_.emplace(stream_.get(), name_.c_str());
    return read_header();
}

bool DPI_CURSOR::read_header() {
    unsigned char header[PGOPTI_HEADER_SIZE] = {};
    const std::size_t present =
        static_cast<std::size_t>(std::min<std::uint64_t>(reader_->size(), sizeof header));
    reader_->read(0, header, present, name_.c_str());
    if (present < 4 || read_u32(header + PGOPTI_HEADER_MAGIC) != PGOPTI_DPI_MAGIC)
        return fail(name_ + " is not a dynamic profile; name one that vexcov-import wrote");
    if (present < sizeof header)
        return fail(name_ + " is cut short; import it again");
    num_runs_ = read_u32(header + PGOPTI_HEADER_RUNS);
    num_records_ = read_u32(header + PGOPTI_HEADER_RECORDS);
    header_word_ = read_u32(header + PGOPTI_HEADER_WORD);
    header_text_.assign(reinterpret_cast<const char*>(header) + PGOPTI_HEADER_TEXT, PGOPTI_HEADER_TEXT_SIZE);
    next_position_ = PGOPTI_HEADER_SIZE;
    return true;
}

bool DPI_CURSOR::next() {
    if (number_ == num_records_ || !error_.empty())
        return false;
    position_ = next_position_;
    ++number_;
    return read_record() && read_key();
}

bool DPI_CURSOR::read_record() {
    const std::uint64_t left = reader_->size() - position_;
    if (left < PGOPTI_RECORD_HEAD_SIZE)
        return fail(name_ + " is cut short; import it again");
    unsigned char head[PGOPTI_RECORD_HEAD_SIZE];
    reader_->read(position_, head, sizeof head, name_.c_str());
    layout_ = &DPI_layout_of(head);
    const std::uint32_t size = DPI_record_size_get({head, layout_});
    if (size > left)
        return fail(name_ + " is cut short; import it again");
    record_.resize(size);
    reader_->read(position_, record_.data(), size, name_.c_str());
    if (DPI_version_get({head, layout_}) != layout_->version || !DPI_record_is_sound(record(), size))
        return fail(name_ + ": record " + std::to_string(number_) +
                    " is damaged or has another format version; import it again");
    next_position_ = position_ + size;
    return true;
}

bool DPI_CURSOR::read_key() {
    const std::uint64_t offset = DPI_file_name_get(record());
    if (offset != file_name_offset_) {
        file_name_offset_ = ~std::uint64_t{0};
        if (!read_name(offset, &file_name_))
            return false;
        file_name_offset_ = offset;
    }
    if (!read_name(DPI_key_func_name_get(record()), &name_buffer_))
        return false;
    key_.assign(file_name_).append(1, '\'').append(name_buffer_).append(1, '\'');
    function_length_ = name_buffer_.size();
    return true;
}

bool DPI_CURSOR::read_name(std::uint64_t offset, std::string* text) {
    text->clear();
    if (offset > INT64_MAX)
        return fail(name_ + ": record " + std::to_string(number_) +
                    " has a name beyond the end of any file; import it again");
    while (offset < reader_->size()) {
        std::size_t available = 0;
        const unsigned char* const bytes = reader_->peek(offset, &available, name_.c_str());
        const void* const end = std::memchr(bytes, 0, available);
        const std::size_t length =
            end ? static_cast<std::size_t>(static_cast<const unsigned char*>(end) - bytes) : available;
        if (text->size() + length > DPI_LONGEST_NAME)
            return fail(name_ + ": record " + std::to_string(number_) +
                        " has a name of more than 65,535 bytes; import it again");
        text->append(reinterpret_cast<const char*>(bytes), length);
        if (end)
            break;
        offset += available;
    }
    name_bytes_ += text->size();
    if (name_bytes_ / kMostNames > reader_->size())
        return fail(name_ + " has far more names than bytes, as they lie in each other; import it again");
    return true;
}

void DPI_CURSOR::copy(std::FILE* out) {
    for (std::uint64_t at = 0; at < reader_->size();) {
        std::size_t available = 0;
        const unsigned char* const bytes = reader_->peek(at, &available, name_.c_str());
        std::fwrite(bytes, 1, available, out);
        at += available;
    }
}
