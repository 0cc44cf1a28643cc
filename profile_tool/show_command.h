// "vexcov-profile show".
#pragma once

#include "profile_tool/tool_options.h"

/// Writes the dynamic profile to standard output in the form that was asked for, or ends the run with a
/// message and status 1.
void show_profile(const tool_options& options);
