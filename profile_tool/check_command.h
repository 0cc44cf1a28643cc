// "vexcov-profile check".
#pragma once

#include "profile_tool/tool_options.h"

/// Prints what a report of the profiles would hide and ends the run with status 2, or with 0 when there is
/// nothing. A profile that cannot be read ends it with a message and status 1.
void check_profile(const tool_options& options);
