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

void print_note(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    print_message("NOTE: ", format, arguments);
    va_end(arguments);
}
