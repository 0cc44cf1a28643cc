#include "common/checked_alloc.h"

#include "common/fatal.h"
#include "common/message.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <utility>

/// `memory`, or the end of the run when it is null.
static void* check_allocated(void* memory, std::size_t size, const char* what) {
    if (memory)
        return memory;
    print_error("unable to allocate %d bytes of memory for %s", static_cast<int>(size), what);
    pgt_Exit(1);
}

void* pmalloc(std::size_t size, const char* what) {
    return check_allocated(std::malloc(size == 0 ? 1 : size), size, what);
}

void* zalloc(std::size_t size, const char* what) {
    return check_allocated(std::calloc(1, size == 0 ? 1 : size), size, what);
}

void* ck_malloc(std::size_t size) {
    return pmalloc(size, "internal use");
}

char* copy_string(const char* text, const char* what) {
    const std::size_t size = std::strlen(text) + 1;
    return static_cast<char*>(std::memcpy(pmalloc(size, what), text, size));
}

constexpr std::size_t kChunkSize = std::size_t{1} << 16;

checked_arena::~checked_arena() {
    for (char* chunk : chunks_)
        std::free(chunk);
}

void checked_arena::swap(checked_arena& other) noexcept {
    chunks_.swap(other.chunks_);
    std::swap(used_, other.used_);
    std::swap(size_, other.size_);
}

void* checked_arena::allocate(std::size_t size, const char* what) {
    const std::size_t rounded = (size + 7) / 8 * 8;
    if (rounded > size_ - used_) {
        if (chunks_.size() == chunks_.capacity())
            chunks_.reserve(2 * chunks_.size() + 1);
        size_ = std::max(rounded, kChunkSize);
        used_ = size_; // should there be no memory
        chunks_.push_back(static_cast<char*>(zalloc(size_, what)));
        used_ = 0;
    }
    void* const memory = chunks_.back() + used_;
    used_ += rounded;
    return memory;
}

char* checked_arena::copy(const char* text, const char* what) {
    const std::size_t size = std::strlen(text) + 1;
    return static_cast<char*>(std::memcpy(allocate(size, what), text, size));
}
