#include "import/import_message.h"

#include "common/fatal.h"

#include <cstdarg>
#include <cstdio>

void import_error(const char* format, ...) {
    std::fputs("ERROR: ", stderr);
    std::va_list arguments;
    va_start(arguments, format);
    std::vfprintf(stderr, format, arguments);
    va_end(arguments);
    std::fputs("\n", stderr);
    pgt_Exit(1);
}

void import_warning(const char* format, ...) {
    std::fputs("WARNING: ", stderr);
    std::va_list arguments;
    va_start(arguments, format);
    std::vfprintf(stderr, format, arguments);
    va_end(arguments);
    std::fputs("\n", stderr);
}

std::string printable(std::string_view name) {
    static const char digits[] = "0123456789abcdef";
    std::string text;
    text.reserve(name.size());
    for (const char c : name) {
        const unsigned char byte = static_cast<unsigned char>(c);
        if (byte >= 0x20 && byte != 0x7f) {
            text += c;
            continue;
        }
        text += "\\x";
        text += digits[byte >> 4];
        text += digits[byte & 15];
    }
    return text;
}
