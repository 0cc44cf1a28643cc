// Writing both profiles of a program, together or not at all.
#pragma once

#include "profile/dpi_format.h"
#include "profile/profile_content.h"
#include "profile/profile_lock.h"

#include <cstdio>
#include <functional>
#include <string>

/// Where both profiles go.
struct profile_names {
    std::string dpi;
    std::string spi; ///< empty: there is no static one to write
};

/// Writes one of them. A failed write shows in the stream; for any other failure the result is false, with a
/// message in `*error`.
using profile_content_writer = std::function<bool(std::FILE* stream, std::string* error)>;
struct profile_contents {
    profile_content_writer dpi;
    profile_content_writer spi;
};

/// Replaces the profiles. Both are written under temporary names beside them and renamed when they are
/// complete, while the record lock of an existing dynamic profile is held, which is waited for unless the
/// caller has it; so a reader that locks it sees the old pair or the new one. Any failure leaves what was
/// there before: `*error` receives a message and the result is false. A stream that fails only when it is
/// closed ends the run (output_file.h).
bool PGOPTI_Replace_Profiles(const profile_names& names, profile_lock& lock, const profile_contents& write,
                             std::string* error);

/// The same for the profiles of a program that was measured, with records of this `layout`.
bool PGOPTI_Write_Profiles(const PGOPTI_PROFILE& profile, const PGOPTI_RECORD_LAYOUT& layout,
                           const std::string& dpi_file, const std::string& spi_file, std::string* error);
