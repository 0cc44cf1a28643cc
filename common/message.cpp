#include "common/message.h"

#include "common/fatal.h"
#include "common/progress_line.h"
#include "common/remedy.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <vector>

/// Of the whole run, set by hide_in_messages; as messages show them.
static std::vector<std::string> hidden_folders;

void hide_in_messages(const std::string& folder) {
    hidden_folders.push_back(printable(folder));
}

/// The text of a message without the hidden folders.
__attribute__((format(printf, 1, 0))) static std::string text_of(const char* format, std::va_list arguments) {
    std::va_list again;
    va_copy(again, arguments);
    const int size = std::vsnprintf(nullptr, 0, format, again);
    va_end(again);
    std::string text(static_cast<std::size_t>(std::max(size, 0)) + 1, '\0');
    std::vsnprintf(text.data(), text.size(), format, arguments);
    text.pop_back();
    for (const std::string& folder : hidden_folders)
        for (std::size_t at = 0; (at = text.find(folder, at)) != std::string::npos;)
            text.erase(at, folder.size());
    return text;
}

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
    if (hidden_folders.empty())
        std::vfprintf(stderr, format, arguments);
    else
        std::fputs(text_of(format, arguments).c_str(), stderr);
    if (const char* const remedy = program_name ? remedy_of_shared(format) : nullptr) {
        std::fputs("; ", stderr);
        std::fputs(remedy, stderr);
    }
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

void print_unopened(const char* format, ...) {
    const int error = errno;
    std::va_list arguments;
    va_start(arguments, format);
    if (messages_are_named()) {
        std::string text = text_of(format, arguments);
        text.pop_back();
        print_error("%s: %s", text.c_str(), reason_of(error).c_str());
    } else {
        std::vfprintf(stderr, format, arguments);
        std::fputs("\n", stderr);
    }
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
