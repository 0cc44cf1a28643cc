// Writer of a dynamic profile whose records come one after the other, in the order of their keys, and need
// not fit in memory. Records and names are collected in files without a name, since the place of a name in
// the profile is known only when all records are.
//
//   header, records, file names, then for each record its function name and what further names it has
//
// A file name is stored once for records that follow each other; so is a name that equals the function's.
#pragma once

#include "common/file_ptr.h"
#include "common/text_buffer.h"
#include "profile/dpi_content.h"
#include "profile/dpi_writer.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

/// The names of a record.
struct DPI_RECORD_NAMES {
    std::string_view file;
    std::string_view function;
    const std::vector<std::string>* routines = nullptr; ///< one for each routine of the record
    const std::string* vtbl = nullptr;                  ///< null for none
};

class DPI_STREAM_WRITER {
  public:
    /// Collects in `directory`.
    explicit DPI_STREAM_WRITER(const std::string& directory);

    /// Adds a record; its offsets of names are set here. `behind` follows it within its size; readers of
    /// profiles pass over it. False when the record has no room in a profile.
    bool add(DPI_CONTENT& content, const DPI_RECORD_NAMES& names, std::string_view behind = {});

    /// Whether the 32-bit layout could hold all that was added without loss.
    bool fits_narrow() const;

    /// Writes the profile to `out`; header.records is not looked at. A failed write to `out` shows in the
    /// stream. False when what was collected is lost.
    bool write(std::FILE* out, DPI_HEADER header, const PGOPTI_RECORD_LAYOUT& layout);

    /// What failed, as a message.
    const std::string& error() const { return error_; }

  private:
    struct pile {
        file_ptr stream;
        std::unique_ptr<text_buffer> buffer;
        std::uint64_t size = 0;

        void put(std::string_view bytes);
        std::uint64_t put_string(std::string_view text); ///< returns its offset
    };

    bool fail(const std::string& what);
    bool fail_scratch(const char* what);
    bool finish(pile& collected);
    bool copy_records(text_buffer& out, const PGOPTI_RECORD_LAYOUT& layout);
    bool read_record(std::vector<char>* bytes);

    std::string directory_;
    std::string error_;
    pile records_; ///< in the 64-bit layout; offsets count from the start of each kind of names
    pile file_names_;
    pile names_;
    std::string last_file_;
    std::uint64_t last_file_offset_ = 0;
    std::uint32_t num_records_ = 0;
    std::uint64_t narrow_size_ = 0; ///< of the records in the 32-bit layout
    bool is_exact_single_ = true;   ///< no count needs more than single precision
    std::string bytes_;             ///< the record being added; kept for its memory
};
