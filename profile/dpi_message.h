// Messages of the profile reader, on standard error.
#pragma once

/// Sets the tool name that stands in front of the messages below, where name_messages (common/message.h) was
/// not called; borrowed, null for none.
void PGOPTI_Tool_Set_Name(const char* name);

/// Prints the tool name and ": " (when set), "ERROR: ", the formatted text and a newline, and ends the run
/// with exit status 1. `code` classifies the error for callers; it is not shown.
[[noreturn]] void PGOPTI_Tool_Error(int code, const char* format, ...) __attribute__((format(printf, 2, 3)));

/// The same with "WARNING: ", and returns.
void PGOPTI_Tool_Warning(const char* format, ...) __attribute__((format(printf, 1, 2)));
