// Output files: every page, image and export of the report is opened and closed here.
//
// The streams are ordinary stdio streams with large buffers, so a page costs a handful of system calls.
// A write that fails is not tested where it happens: close_output tests the stream once for all writes.
#pragma once

#include <cstdio>

/// Opens `path` with a stdio `mode` for writing. Returns null when it cannot be opened (nothing is printed).
/// The stream is owned by this module until close_output; `path` is copied for the message of a failed write.
std::FILE* open_output(const char* path, const char* mode);

/// Closes a stream of open_output. When anything written to it was lost (disk full, closed pipe), prints
/// "cannot write %s" with its path to standard error and ends the run with exit status 1.
void close_output(std::FILE* stream);

/// Closes every stream that is still open. Returns false, after a message for each, when one of them could
/// not be written in full. For pgt_Exit only.
bool close_open_outputs();
