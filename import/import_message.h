// Messages of the importer: all on standard error, one line each unless the text itself holds newlines.
#pragma once

#include "common/message.h"

/// Writes "ERROR: ", the text and a newline, and ends the run with exit status 1. No profile is written.
[[noreturn]] void import_error(const char* format, ...) __attribute__((format(printf, 1, 2)));

/// Writes "WARNING: ", the text and a newline; the run goes on.
void import_warning(const char* format, ...) __attribute__((format(printf, 1, 2)));

/// Writes "NOTE: ", the text and a newline: nothing is wrong.
void import_note(const char* format, ...) __attribute__((format(printf, 1, 2)));
