// "vexcov-profile merge".
#pragma once

#include "profile_tool/tool_options.h"

/// Adds up the dynamic profiles, unites their static ones and writes the result, or ends the run with a
/// message and status 1, with what was there before as it was.
void merge_profiles(const tool_options& options);
