// The order of a profile's records: ascending by their keys, "file'function'", as unsigned bytes.
#pragma once

#include "profile/profile_content.h"

/// Puts all records into their order. Those of one key keep theirs.
void sort_records(PGOPTI_PROFILE* profile);
