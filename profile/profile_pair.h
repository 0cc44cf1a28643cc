// Writing both profiles of a program, together or not at all.
#pragma once

#include "profile/dpi_format.h"
#include "profile/profile_content.h"

#include <string>

/// Writes the dynamic profile, with records of this `layout`, to `dpi_file` and the static one to `spi_file`.
/// Both are written under temporary names beside them and renamed when they are complete, while the record
/// lock of an existing dynamic profile is held, which is waited for; so a reader that locks it sees the old
/// pair or the new one. Any failure leaves what was there before: `*error` receives a message and the result
/// is false. A stream that fails only when it is closed ends the run (output_file.h).
bool PGOPTI_Write_Profiles(const PGOPTI_PROFILE& profile, const PGOPTI_RECORD_LAYOUT& layout,
                           const std::string& dpi_file, const std::string& spi_file, std::string* error);
