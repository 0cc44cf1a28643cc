// Files for what does not fit in memory: without a name from the moment they are open, so that nothing is
// left of them however the process ends.
#pragma once

#include "common/file_ptr.h"

#include <string>

/// Opens a new file for reading and writing on the disk of `directory`, which is where the output goes, so
/// that there is room for both or a message that names it. Null with errno when it cannot be made.
file_ptr open_scratch_file(const std::string& directory);

/// Ends the writing of a stream and goes to its start. False with errno when something was lost.
bool rewind_scratch_file(std::FILE* stream);

/// Copies the rest of `from` to `to`. False with errno when `from` cannot be read; a failed write shows in
/// `to`.
bool copy_scratch_file(std::FILE* from, std::FILE* to);
