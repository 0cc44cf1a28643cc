#include "common/message.h"

#include "common/fatal.h"
#include "common/progress_line.h"

#include <cstdio>

void print_message(const char* kind, const char* format, std::va_list arguments) {
    progress_line::wipe();
    std::fputs(kind, stderr);
    std::vfprintf(stderr, format, arguments);
    std::fputs("\n", stderr);
}

void end_with_error(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    print_message("ERROR: ", format, arguments);
    va_end(arguments);
    pgt_Exit(1);
}

void print_warning(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    print_message("WARNING: ", format, arguments);
    va_end(arguments);
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
