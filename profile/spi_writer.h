// Writer of the static profile: one line for each routine.
//
//   file second-name routine line blocks flag
//
// with "-" as the second name and "I" (imported) as the flag. When a name is longer than its reader expects,
// a head "V1 f s r" with the sizes of the three name buffers comes first.
#pragma once

#include "profile/profile_content.h"

#include <cstdio>

/// Writes every routine. The names must have no white space in them. A failed write shows in the stream.
void PGOPTI_SPI_Write(std::FILE* stream, const PGOPTI_PROFILE& profile);
