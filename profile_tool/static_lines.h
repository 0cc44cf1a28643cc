// The lines of a static profile one after the other.
#pragma once

#include "profile/spi_file.h"

#include <functional>
#include <string>

using static_line_taker = std::function<void(const SPI_RECORD&)>;

/// Hands every line of the static profile `path` to `take`, in the order of the file. False, with a message
/// that names it in `*error`, when it cannot be read or is corrupt.
bool read_static_lines(const std::string& path, const static_line_taker& take, std::string* error);

/// The same for one that is in memory and not empty.
bool read_static_lines(std::string& bytes, const std::string& path, const static_line_taker& take,
                       std::string* error);
