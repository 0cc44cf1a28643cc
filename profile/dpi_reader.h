// Random access to an open profile through a small block cache, so that records and names that lie near each
// other cost no system call each. Memory: at most 1 MiB.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>

class DPI_READER {
  public:
    /// `stream` stays open as long as the reader; its position is moved. Takes the file's size once.
    DPI_READER(std::FILE* stream, const char* fileName);

    std::uint64_t size() const { return size_; }

    /// Copies `count` bytes at `position`. Bytes beyond the end are a failed read, which ends the run.
    void read(std::uint64_t position, void* buffer, std::size_t count, const char* fileName);

    /// The bytes from `position` to the end of its cached block, at least one; `position` lies in the file.
    /// Valid until the next call.
    const unsigned char* peek(std::uint64_t position, std::size_t* available, const char* fileName);

  private:
    static constexpr std::size_t kBlockSize = std::size_t{1} << 14;
    static constexpr std::size_t kSlots = 64;

    struct slot {
        std::uint64_t block = ~std::uint64_t{0};
        std::unique_ptr<unsigned char[]> bytes;
    };

    std::FILE* stream_;
    std::uint64_t size_;
    slot slots_[kSlots];
};
