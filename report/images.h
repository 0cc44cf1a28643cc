// The four GIF images of a report, drawn for it and embedded in the program.
//
// The two larger images carry colour tables that are mostly unused; their run of zero bytes is not stored but
// put back when the file is written. All files go into the report directory, which must exist.
#pragma once

#include <cstdio>

/// Writes REPORT_DIR/`fileName`: `head`, then `zeroCount` zero bytes, then `tail`. A part of length 0 is left
/// out. False, without a message, when the file cannot be opened.
bool createIcon(const char* fileName, const unsigned char* head, int headLength, int zeroCount,
                const unsigned char* tail, int tailLength);

/// Writes `count` bytes, or `count` zero bytes when `bytes` is null. A byte of `bytes` that cannot be written
/// is reported on standard output as "ERR at %d %d" (index, value as a signed byte) and skipped.
void putBytes(std::FILE* stream, const unsigned char* bytes, int count);

/// The images under the given file name, written as by createIcon: a house (19x20), a question mark (19x20),
/// the maker's logo (50x34) and a transparent point (1x1).
bool createHomeIcon(const char* fileName);
bool createHelpIcon(const char* fileName);
bool createVexalRLogo(const char* fileName);
bool createSpacer(const char* fileName);
