/* Preloaded: makes the allocations number FAULT_FIRST to FAULT_LAST of the program FAULT_PROGRAM fail, not those of
 * programs that it starts. At the end the number of allocations made is written to the file FAULT_COUNT. */
#define _GNU_SOURCE
#include <errno.h>
#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

extern void* __libc_malloc(size_t size);
extern void* __libc_calloc(size_t count, size_t size);
extern void* __libc_realloc(void* memory, size_t size);
extern void* __libc_memalign(size_t alignment, size_t size);

static long made = 0;
static long first = -1; /* -1: the environment was not looked at */
static long last = 0;

static int is_meant(void) {
    const char* program = getenv("FAULT_PROGRAM");
    return program && strcmp(program, program_invocation_short_name) == 0;
}

static long number(const char* name) {
    const char* text = getenv(name);
    return text ? atol(text) : 0;
}

static int fails(void) {
    if (first == -1) {
        first = is_meant() ? number("FAULT_FIRST") : 0;
        last = is_meant() ? number("FAULT_LAST") : 0;
    }
    if (++made < first || made > last)
        return 0;
    errno = ENOMEM;
    return 1;
}

void* malloc(size_t size) {
    return fails() ? NULL : __libc_malloc(size);
}

void* calloc(size_t count, size_t size) {
    return fails() ? NULL : __libc_calloc(count, size);
}

void* realloc(void* memory, size_t size) {
    return fails() ? NULL : __libc_realloc(memory, size);
}

void* aligned_alloc(size_t alignment, size_t size) {
    return fails() ? NULL : __libc_memalign(alignment, size);
}

__attribute__((destructor)) static void write_count(void) {
    const char* name = getenv("FAULT_COUNT");
    if (name && is_meant() && dprintf(open(name, O_WRONLY | O_CREAT | O_TRUNC, 0600), "%ld\n", made) < 0)
        abort();
}
