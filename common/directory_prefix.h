// Directories as the beginning of the paths below them.
#pragma once

#include <filesystem>
#include <string>

/// A path in normal form with one "/" at its end.
std::string directory_prefix(const std::filesystem::path& path);
