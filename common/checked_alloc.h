// Allocation that ends the run with a message when memory is exhausted.
#pragma once

#include <cstddef>
#include <vector>

/// Allocates `size` bytes (at least one). On failure writes "unable to allocate %d bytes of memory for
/// %s" with `what` to standard error and exits with status 1. The caller owns the result; release with
/// free().
void* pmalloc(std::size_t size, const char* what);

/// As pmalloc, zero-filled.
void* zalloc(std::size_t size, const char* what);

/// As pmalloc, for callers that have no name for the object.
void* ck_malloc(std::size_t size);

/// An owned copy of `text`, made with pmalloc.
char* copy_string(const char* text, const char* what);

/// Memory for many small things that go away together. `what` is what pmalloc says when there is no more.
class checked_arena {
  public:
    checked_arena() = default;
    checked_arena(checked_arena&& other) noexcept { swap(other); }
    checked_arena& operator=(checked_arena&& other) noexcept {
        swap(other);
        return *this;
    }
    checked_arena(const checked_arena&) = delete;
    checked_arena& operator=(const checked_arena&) = delete;
    ~checked_arena();

    /// `size` zero bytes, aligned for anything with a size of a multiple of 8.
    void* allocate(std::size_t size, const char* what);

    /// A copy of `text`.
    char* copy(const char* text, const char* what);

  private:
    void swap(checked_arena& other) noexcept;

    std::vector<char*> chunks_;
    std::size_t used_ = 0; ///< bytes of the last chunk
    std::size_t size_ = 0; ///< of the last chunk
};
