#include "profile_tool/static_lines.h"

#include "common/printable.h"
#include "common/remedy.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <utility>

file_ptr open_static_profile(const std::string& path, std::string* error) {
    struct stat status;
    const int descriptor = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    file_ptr stream(descriptor == -1 ? nullptr : fdopen(descriptor, "rb"));
    if (!stream || fstat(descriptor, &status) != 0) {
        *error = "cannot open " + printable(path) + ": " + reason_of(errno);
        return nullptr;
    }
    if (S_ISREG(status.st_mode))
        return stream;
    *error = printable(path) + " is not a regular file; name the static profile";
    return nullptr;
}

static bool read_lines(file_ptr stream, const std::string& path, const static_line_taker& take,
                       std::string* error) {
    if (!stream)
        return false;
    SPI_STREAM text(stream.get());
    SPI_RECORD record;
    bool is_whole = true;
    errno = 0;
    do {
        is_whole = PGOPTI_SPI_Read_Line_Header(text, record);
        if (is_whole)
            take(record);
    } while (is_whole && PGOPTI_SPI_Skip_Line(text) && text.peek() != EOF);
    if (std::ferror(stream.get()))
        *error = "cannot read " + printable(path) + ": " + reason_of(errno);
    else if (!is_whole)
        *error = "corrupt static profile " + printable(path) + "; import it again";
    return error->empty();
}

bool read_static_lines(const std::string& path, const static_line_taker& take, std::string* error) {
    return read_lines(open_static_profile(path, error), path, take, error);
}

bool read_static_lines(std::string& bytes, const std::string& path, const static_line_taker& take,
                       std::string* error) {
    file_ptr stream(fmemopen(bytes.data(), bytes.size(), "rb"));
    if (!stream)
        *error = "cannot read " + printable(path) + ": " + reason_of(errno);
    return read_lines(std::move(stream), path, take, error);
}
