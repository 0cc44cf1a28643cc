#include "common/checked_alloc.h"

#include "common/fatal.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

/// `memory`, or the end of the run when it is null.
static void* check_allocated(void* memory, std::size_t size, const char* what) {
    if (memory)
        return memory;
    std::fprintf(stderr, "ERROR: unable to allocate %d bytes of memory for %s\n", static_cast<int>(size),
                 what);
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
