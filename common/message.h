// Messages of the programs: all on standard error, one line each unless the text itself holds newlines.
#pragma once

#include "common/printable.h"

#include <cstdarg>
#include <string>

enum class message_kind { error, warning, note };

/// Lets every message begin with the program's name, borrowed, and its kind: "vexcov-check: error: ". The
/// programs beside vexcov call it first. Without it a message begins with "ERROR: ", "WARNING: " or "NOTE: ".
/// Deliberate: so it is in vexcov, whose messages scripts have been matching.
void name_messages(const char* program);

/// Whether name_messages was called.
bool messages_are_named();

/// Writes an error and ends the run with exit status 1.
[[noreturn]] void end_with_error(const char* format, ...) __attribute__((format(printf, 1, 2)));

/// Writes an error; what becomes of the run is up to the caller.
void print_error(const char* format, ...) __attribute__((format(printf, 1, 2)));

/// Writes a warning; the run goes on.
void print_warning(const char* format, ...) __attribute__((format(printf, 1, 2)));

/// Writes a note: nothing is wrong.
void print_note(const char* format, ...) __attribute__((format(printf, 1, 2)));

/// Says, before errno changes, that a file cannot be opened. Deliberate: vexcov has words of its own for each
/// kind, which scripts have been matching and which `format` is, up to an exclamation mark. In the programs
/// beside it, an error begins with them and goes on with the reason.
void print_unopened(const char* format, ...) __attribute__((format(printf, 1, 2)));

/// Leaves `folder` out of the names in all messages from now on: one that the program has made for itself,
/// which will be gone.
void hide_in_messages(const std::string& folder);

/// Writes how a message of the kind begins, the text and a newline, without asking for memory unless a folder
/// is hidden.
void print_message(message_kind kind, const char* format, std::va_list arguments)
    __attribute__((format(printf, 2, 0)));
