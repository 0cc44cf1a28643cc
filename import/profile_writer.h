// Writer of the two profile files that vexcov reads.
#pragma once

#include "import/profile_data.h"

#include <cstdint>
#include <string>

/// Writes the dynamic profile (64-bit records with line information, for the functions that were called) to
/// `dpi_file` and the static profile (every function) to `spi_file`. Both are written under temporary names
/// beside them and renamed when they are complete, while the record lock of an existing dynamic profile is
/// held; so a reader that locks it sees the old pair or the new one. Any failure ends the run with a message
/// and status 1 and leaves what was there before.
void write_profiles(const profile_data& profile, const std::string& dpi_file, const std::string& spi_file,
                    std::uint32_t runs);
