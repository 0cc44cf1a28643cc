// Messages of the programs beside vexcov: all on standard error, one line each unless the text itself holds
// newlines.
#pragma once

#include "common/printable.h"

#include <cstdarg>
#include <string>

/// Writes "ERROR: ", the text and a newline, and ends the run with exit status 1.
[[noreturn]] void end_with_error(const char* format, ...) __attribute__((format(printf, 1, 2)));

/// Writes "WARNING: ", the text and a newline; the run goes on.
void print_warning(const char* format, ...) __attribute__((format(printf, 1, 2)));

/// Writes "NOTE: ", the text and a newline: nothing is wrong.
void print_note(const char* format, ...) __attribute__((format(printf, 1, 2)));

/// Leaves `folder` out of the names in all messages from now on: one that the program has made for itself,
/// which will be gone.
void hide_in_messages(const std::string& folder);

/// Writes `kind`, the text and a newline.
void print_message(const char* kind, const char* format, std::va_list arguments)
    __attribute__((format(printf, 2, 0)));
