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
