// Messages of vexcov-profile, on standard error.
#pragma once

#include <string>

/// Writes an error and ends the run with exit status 1.
[[noreturn]] void tool_error(const std::string& text);

/// Writes a warning; the run goes on.
void tool_warning(const std::string& text);
