// The processes that are children of this one: its own and, where it is their reaper, orphans of those.
#pragma once

#include <sys/types.h>
#include <vector>

/// The children in this process's session; daemons have one of their own. Empty where the system does not
/// tell.
std::vector<pid_t> own_children();
