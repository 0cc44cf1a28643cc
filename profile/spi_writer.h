// Writer of the static profile: one line for each routine.
//
//   file second-name routine line blocks flag
//
// When a name is longer than its reader expects,
// a head "V1 f s r" with the sizes of the three name buffers comes first.
#pragma once

#include "profile/profile_content.h"

#include <cstdint>
#include <cstdio>
#include <string_view>
#include <vector>

/// One line.
struct SPI_RECORD_VIEW {
    std::string_view file_name;
    std::string_view second_name;
    std::string_view proc_name;
    std::int64_t line; ///< as is the next, of 32 bits: signed where it was read, unsigned where it is new
    std::int64_t block_count;
    char flag;
};

/// Writes every routine, with "-" as the second name and "I" (imported) as the flag. The names must have no
/// white space in them. A failed write shows in the stream.
void PGOPTI_SPI_Write(std::FILE* stream, const PGOPTI_PROFILE& profile);

/// Writes lines that were read from static profiles.
void PGOPTI_SPI_Write_Records(std::FILE* stream, const std::vector<SPI_RECORD_VIEW>& records);
