// Reading that ends the run on any failure, and opening under a record lock.
//
// A failed read, seek or position query prints the system's error text for the file and "FATAL ERROR: fread
// on file %s failed" (or fseek, ftell; without " %s" when `fileName` is null), and the run ends with exit
// status 1. Where name_messages (common/message.h) was called, it is one message that says what is wrong.
#pragma once

#include <cstddef>
#include <cstdio>

/// Opens `path` with a stdio mode and takes an advisory record lock, waiting for it: shared for reading,
/// exclusive when the mode contains 'w', 'a' or '+'. It covers the file from byte 16 to its end. Created
/// files get permission 0600. Returns null when the file cannot be opened or the lock fails other than by
/// missing permission or resources; in those two cases a warning is printed and the file is used unlocked.
/// The lock is held until the stream is closed, whatever other descriptors of the file come and go.
std::FILE* checked_fopen(const char* path, const char* mode);

/// Closes the stream (and drops its lock); null is ignored.
void checked_fclose(std::FILE* stream);

/// Reads `count` items of `size` bytes; a short read is a failure.
void checked_fread(void* buffer, std::size_t size, std::size_t count, std::FILE* stream,
                   const char* fileName);

/// Ends the run as checked_fread does for a file that ends too early.
[[noreturn]] void checked_short_read(const char* fileName);

/// Ends the run as checked_fseek does for a place that no file has.
[[noreturn]] void checked_bad_seek(const char* fileName);

void checked_fseek(std::FILE* stream, long offset, int whence, const char* fileName);

long checked_ftell(std::FILE* stream, const char* fileName);
