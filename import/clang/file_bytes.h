// Bytes of a regular file, read in pieces: programs are large, and only a small part of each is of interest.
// They are not mapped into memory, since a build or a test run that shortens a mapped file would kill the
// importer.
#pragma once

#include "import/clang/byte_buffer.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

/// An open file. Whatever lies outside of it throws input_error, what cannot be read file_failure.
class file_bytes {
  public:
    /// Opens `path`, which must be a regular file. Throws not_of_interest where that is not allowed.
    explicit file_bytes(const std::string& path);
    ~file_bytes();
    file_bytes(const file_bytes&) = delete;
    file_bytes& operator=(const file_bytes&) = delete;

    std::uint64_t size() const { return size_; }

    /// The `size` bytes at `offset`; valid until the next call.
    std::string_view at(std::uint64_t offset, std::uint64_t size);

    /// Appends the `size` bytes at `offset`.
    void append(std::uint64_t offset, std::uint64_t size, byte_buffer* to);

  private:
    bool in_window(std::uint64_t offset, std::uint64_t size);
    void read(std::uint64_t offset, char* to, std::size_t size) const;

    int descriptor_;
    std::uint64_t size_ = 0;
    byte_buffer window_; ///< bytes from `window_offset_` on, so that small pieces take no system call each
    std::uint64_t window_offset_ = 0;
    std::uint64_t next_window_; ///< size of the next one; of most files only the start is read
    byte_buffer large_;         ///< the last piece that the window could not hold
};

/// A part of a file that is an object of its own: a whole program, or a member of an archive.
class file_part {
  public:
    /// The part must lie within the file, which must live as long.
    file_part(file_bytes* file, std::uint64_t offset, std::uint64_t size)
        : file_(file), offset_(offset), size_(size) {}

    std::uint64_t size() const { return size_; }

    /// The `size` bytes at `offset` of the part; valid until the next call on any part of the file.
    std::string_view at(std::uint64_t offset, std::uint64_t size) const;

    /// Appends the `size` bytes at `offset` of the part.
    void append(std::uint64_t offset, std::uint64_t size, byte_buffer* to) const;

  private:
    file_bytes* file_;
    std::uint64_t offset_;
    std::uint64_t size_;
};
