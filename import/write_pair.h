// The last step of every import.
#pragma once

#include "import/import_options.h"
#include "profile/profile_content.h"

/// Makes the names of `profile` writable, which a warning tells of, and writes both profiles under the names
/// and with the number of runs that the options ask for. Any failure ends the run with a message and status
/// 1, with both profiles as they were.
void write_pair(PGOPTI_PROFILE profile, const import_options& options);
