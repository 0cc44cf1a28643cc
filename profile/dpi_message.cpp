#include "profile/dpi_message.h"

#include "common/fatal.h"

#include <cstdarg>
#include <cstdio>

static const char* tool_name = nullptr;

void PGOPTI_Tool_Set_Name(const char* name) {
    tool_name = name;
}

__attribute__((format(printf, 2, 0))) static void print_message(const char* kind, const char* format,
                                                                va_list arguments) {
    if (tool_name)
        std::fprintf(stderr, "%s: ", tool_name);
    std::fputs(kind, stderr);
    std::vfprintf(stderr, format, arguments);
    std::fputc('\n', stderr);
}

void PGOPTI_Tool_Error(int /*code*/, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    print_message("ERROR: ", format, arguments);
    va_end(arguments);
    pgt_Exit(1);
}

void PGOPTI_Tool_Warning(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    print_message("WARNING: ", format, arguments);
    va_end(arguments);
}
