// Text that is kept aside in a temporary file until what has to stand in front of it is known.
#pragma once

#include "common/text_buffer.h"

#include <cstdint>
#include <cstdio>

class spool {
  public:
    /// Opens the temporary file. Where there is no room for one the run ends with a message and status 1, as
    /// it does below.
    spool();
    ~spool();
    spool(const spool&) = delete;
    spool& operator=(const spool&) = delete;

    /// The stream to write to, through a text_buffer that is flushed before size() and copy() are called.
    std::FILE* stream() { return stream_; }

    /// Bytes that were written.
    std::uint64_t size();

    /// Appends `count` bytes from `offset` on to `out`.
    void copy(std::uint64_t offset, std::uint64_t count, text_buffer& out);

  private:
    std::FILE* stream_;
};
