#include "profile/dpi_message.h"

#include "common/fatal.h"
#include "common/message.h"

#include <cstdarg>
#include <cstdio>

static const char* tool_name = nullptr;

void PGOPTI_Tool_Set_Name(const char* name) {
    tool_name = name;
}

__attribute__((format(printf, 2, 0))) static void print_named(message_kind kind, const char* format,
                                                              va_list arguments) {
    if (tool_name && !messages_are_named())
        std::fprintf(stderr, "%s: ", tool_name);
    print_message(kind, format, arguments);
}

void PGOPTI_Tool_Error(int /*code*/, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    print_named(message_kind::error, format, arguments);
    va_end(arguments);
    pgt_Exit(1);
}

void PGOPTI_Tool_Warning(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    print_named(message_kind::warning, format, arguments);
    va_end(arguments);
}
