// The records of a dynamic profile one after the other, for programs that take all of them: what is in memory
// is one record, whatever the size of the file.
//
// Everything is checked as when the profile is opened for a report (dpi_file.h). What is wrong is told as one
// message; only a disk that fails ends the run (checked_io.h).
#pragma once

#include "common/file_ptr.h"
#include "profile/dpi_reader.h"
#include "profile/dpi_record.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <vector>

/// Names of more bytes are refused: each may lie anywhere in the file, so that a small one could hold many
/// large names.
constexpr std::size_t DPI_LONGEST_NAME = 65535;

class DPI_CURSOR {
  public:
    /// Opens the profile `path` under its lock, which is waited for, and reads the header. `locked` is a file
    /// that the caller has locked himself: that one is opened without waiting. False after a failure.
    bool open(const std::string& path, const struct stat* locked = nullptr);

    /// The same for a profile that is open. `name` stands for it in messages.
    bool open(file_ptr stream, const std::string& name);

    /// Goes to the next record, the first one at first. False at the end and after a failure.
    bool next();

    /// Goes back to before the first record.
    void rewind() {
        number_ = 0;
        next_position_ = PGOPTI_HEADER_SIZE;
    }

    /// Copies the whole file to `out`. A failed write shows in the stream.
    void copy(std::FILE* out);

    /// What failed, as a message that names the file; empty as long as nothing did.
    const std::string& error() const { return error_; }

    const std::string& name() const { return name_; }
    std::int64_t modified() const { return modified_; } ///< time of the last change of the file, in ns
    std::uint64_t file_size() const { return reader_->size(); }

    // The header.
    std::uint32_t num_runs() const { return num_runs_; }
    std::uint32_t num_records() const { return num_records_; }
    std::uint32_t header_word() const { return header_word_; }
    std::string_view header_text() const { return header_text_; } ///< all 512 bytes

    // The present record. Views are valid until the next one.
    DPI_RECORD record() const { return {record_.data(), layout_}; }
    std::uint32_t record_number() const { return number_ - 1; } ///< from 0
    std::uint64_t record_position() const { return position_; } ///< in the file
    std::string_view file_name() const { return file_name_; }
    std::string_view function_name() const {
        return std::string_view(key_).substr(file_name_.size() + 1, function_length_);
    }
    std::string_view key() const { return key_; } ///< file ' function '

    /// Reads another name of the present record. False after a failure.
    bool read_name(std::uint64_t offset, std::string* text);

  private:
    bool fail(const std::string& what);
    bool read_header();
    bool read_record();
    bool read_key();

    std::string name_;
    std::string error_;
    file_ptr stream_; // before the reader, which reads from it
    std::optional<DPI_READER> reader_;
    std::int64_t modified_ = 0;
    std::uint32_t num_runs_ = 0;
    std::uint32_t num_records_ = 0;
    std::uint32_t header_word_ = 0;
    std::string header_text_;
    std::uint32_t number_ = 0; ///< records that were read
    std::uint64_t position_ = 0;
    std::uint64_t next_position_ = 0;
    std::vector<unsigned char> record_;
    const PGOPTI_RECORD_LAYOUT* layout_ = nullptr;
    std::uint64_t file_name_offset_ = ~std::uint64_t{0}; ///< of file_name_; neighbours mostly share it
    std::string file_name_;
    std::string key_;
    std::size_t function_length_ = 0;
    std::string name_buffer_;
};
