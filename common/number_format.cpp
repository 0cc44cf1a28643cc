#include "common/number_format.h"

#include <cstring>

/// Writes the digits of `value`, most significant first, with "," before every group of three when
/// `separators` is set, and a NUL.
static void write_digits(char* out, std::uint64_t value, bool separators) {
    char digits[20];
    int count = 0;
    do {
        digits[count++] = static_cast<char>('0' + value % 10);
        value /= 10;
    } while (value != 0);
    while (count > 0) {
        *out++ = digits[--count];
        if (separators && count != 0 && count % 3 == 0)
            *out++ = ',';
    }
    *out = '\0';
}

void i64_to_ascii(char* buffer, std::int64_t value) {
    std::uint64_t magnitude = static_cast<std::uint64_t>(value);
    if (value < 0) {
        *buffer++ = '-';
        magnitude = 0 - magnitude;
    }
    write_digits(buffer, magnitude, true);
}

void u64_to_ascii(char* buffer, std::uint64_t value) {
    write_digits(buffer, value, true);
}

void u64_to_ascii_no_sep(char* buffer, std::uint64_t value) {
    write_digits(buffer, value, false);
}

double percent(std::int32_t part, std::int32_t whole) {
    return percent64(part, whole);
}

double percent64(std::int64_t part, std::int64_t whole) {
    if (whole == 0)
        return 0.0;
    return static_cast<double>(part) * 100.0 / static_cast<double>(whole);
}

const char* brief(const char* path) {
    if (!path)
        return nullptr;
    const char* slash = std::strrchr(path, '/');
    return slash ? slash + 1 : path;
}
