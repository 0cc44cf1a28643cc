/* Preloaded: makes the allocation number FAULT_ALLOCATION fail, and with FAULT_FOREVER all that follow it. At the
 * end the number of allocations made is written to the file FAULT_COUNT. */
#include <errno.h>
#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

extern void* __libc_malloc(size_t size);
extern void* __libc_calloc(size_t count, size_t size);
extern void* __libc_realloc(void* memory, size_t size);
extern void* __libc_memalign(size_t alignment, size_t size);

static long made = 0;
static long failing = -1; /* -1: the environment was not looked at; 0: none */
static int forever = 0;

static int fails(void) {
    if (failing == -1) {
        const char* number = getenv("FAULT_ALLOCATION");
        forever = getenv("FAULT_FOREVER") != NULL;
        failing = number ? atol(number) : 0;
    }
    ++made;
    if (failing == 0 || (made != failing && !(forever && made > failing)))
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
    char text[32];
    if (!name)
        return;
    const int file = open(name, O_WRONLY | O_CREAT | O_TRUNC, 0600);
    if (file == -1 || write(file, text, (size_t)snprintf(text, sizeof text, "%ld\n", made)) == -1)
        _exit(3);
    close(file);
}
