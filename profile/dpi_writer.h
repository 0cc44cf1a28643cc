// Writer of the dynamic profile of a program that was measured. Records carry positions and one routine,
// whose entry counter is that of the first block; a routine without blocks has none.
#pragma once

#include "profile/dpi_format.h"
#include "profile/profile_content.h"

#include <cstdint>
#include <cstdio>
#include <string_view>
#include <vector>

class text_buffer;

/// The file header, for whoever writes a profile.
struct DPI_HEADER {
    std::uint32_t runs = 0;
    std::uint32_t records = 0;
    std::uint32_t word = 0;
    std::string_view text; ///< at most 512 bytes, the NUL among them
};
void pgopti_Put_Header(text_buffer& out, const DPI_HEADER& header);

class DPI_WRITER {
  public:
    /// Lays out the file. `profile` must stay as it is while this lives. A 32-bit `layout` stores counts at
    /// single precision.
    DPI_WRITER(const PGOPTI_PROFILE& profile, const PGOPTI_RECORD_LAYOUT& layout);

    /// The first routine that the layout has no room for, or null. Then nothing can be written.
    const PGOPTI_ROUTINE* too_large() const { return too_large_; }

    /// Writes the file. A failed write shows in the stream.
    void write(std::FILE* stream) const;

  private:
    const PGOPTI_PROFILE& profile_;
    const PGOPTI_RECORD_LAYOUT& layout_;
    std::vector<std::uint64_t> file_names_; ///< offset of each file's name
    std::uint64_t first_name_ = 0;          ///< offset of the first routine's name, which the others follow
    std::uint32_t num_records_ = 0;
    const PGOPTI_ROUTINE* too_large_ = nullptr;
};
