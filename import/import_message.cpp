#include "import/import_message.h"

#include "common/fatal.h"

void import_error(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    print_message("ERROR: ", format, arguments);
    va_end(arguments);
    pgt_Exit(1);
}

void import_warning(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    print_message("WARNING: ", format, arguments);
    va_end(arguments);
}

void import_note(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    print_message("NOTE: ", format, arguments);
    va_end(arguments);
}
