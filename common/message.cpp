#include "common/message.h"

#include "common/fatal.h"
#include "common/progress_line.h"

#include <cstddef>
#include <cstdio>

static const char* program_name = nullptr;

void name_messages(const char* program) {
    program_name = program;
}

bool messages_are_named() {
    return program_name != nullptr;
}

void print_message(message_kind kind, const char* format, std::va_list arguments) {
    static constexpr const char* named[] = {"error", "warning", "note"};
    static constexpr const char* unnamed[] = {"ERROR: ", "WARNING: ", "NOTE: "};
    progress_line::wipe();
    const auto number = static_cast<std::size_t>(kind);
    if (program_name)
        std::fprintf(stderr, "%s: %s: ", program_name, named[number]);
    else
        std::fputs(unnamed[number], stderr);
    std::vfprintf(stderr, format, arguments);
    std::fputs("\n", stderr);
}

void end_with_error(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    print_message(message_kind::error, format, arguments);
    va_end(arguments);
    pgt_Exit(1);
}

void print_error(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    print_message(message_kind::error, format, arguments);
    va_end(arguments);
}

void print_warning(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    print_message(message_kind::warning, format, arguments);
    va_end(arguments);
}

void print_note(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    print_message(message_kind::note, format, arguments);
    va_end(arguments);
}
