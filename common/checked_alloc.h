// Allocation that ends the run with a message when memory is exhausted.
#pragma once

#include <cstddef>

/// Allocates `size` bytes (at least one). On failure writes "ERROR: unable to allocate %d bytes of memory for
/// %s" with `what` to standard error and exits with status 1. The caller owns the result; release with
/// free().
void* pmalloc(std::size_t size, const char* what);

/// As pmalloc, zero-filled.
void* zalloc(std::size_t size, const char* what);

/// As pmalloc, for callers that have no name for the object.
void* ck_malloc(std::size_t size);

/// An owned copy of `text`, made with pmalloc.
char* copy_string(const char* text, const char* what);
