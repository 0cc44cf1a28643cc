#include "profile_tool/static_lines.h"

#include "common/file_ptr.h"
#include "common/printable.h"

#include <cerrno>
#include <cstring>

static bool read_lines(file_ptr stream, const std::string& path, const static_line_taker& take,
                       std::string* error) {
    if (!stream) {
        *error = "cannot open " + printable(path) + ": " + std::strerror(errno);
        return false;
    }
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
        *error = "cannot read " + printable(path) + ": " + std::strerror(errno);
    else if (!is_whole)
        *error = "corrupt static profile " + printable(path);
    return error->empty();
}

bool read_static_lines(const std::string& path, const static_line_taker& take, std::string* error) {
    return read_lines(file_ptr(std::fopen(path.c_str(), "rb")), path, take, error);
}

bool read_static_lines(std::string& bytes, const std::string& path, const static_line_taker& take,
                       std::string* error) {
    return read_lines(file_ptr(fmemopen(bytes.data(), bytes.size(), "rb")), path, take, error);
}
