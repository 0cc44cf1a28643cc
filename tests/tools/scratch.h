// Scratch directories and child processes for tests.
#pragma once

#include <cstdio>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>

/// A fresh directory, in memory where there is room for one, removed with everything in it at the end of the
/// object's life. It lies alone in another, so that ".." shows a test nothing of others.
class scratch_directory {
  public:
    scratch_directory();
    scratch_directory(const scratch_directory&) = delete;
    scratch_directory& operator=(const scratch_directory&) = delete;
    ~scratch_directory();

    const std::filesystem::path& path() const { return path_; }

    /// Writes a file of this name into the directory and returns its path.
    std::string put(const std::string& name, std::string_view bytes) const;

  private:
    std::filesystem::path path_;
};

/// What a child process left behind.
struct program_result {
    std::string standard_output, standard_error;
    int status = -1; ///< exit status, or 128 + the signal that ended it
};

/// Runs a line as a shell would, without patterns, in `directory`: with both programs and `search_path` on
/// PATH, the C locale, UTC, umask 022 and no input unless the line says otherwise. Nothing else of the
/// environment is passed on but the settings of the sanitizers and of the coverage runtime. A process that
/// runs for a minute is ended.
program_result run_command(const std::string& command, const std::filesystem::path& directory,
                           const std::string& search_path);

/// The bytes of a file. Throws std::runtime_error when it cannot be read.
std::string read_file(const std::filesystem::path& path);

/// Writes a file anew, with the directories above it. Throws std::runtime_error when it cannot be written.
void write_file(const std::filesystem::path& path, std::string_view bytes);

/// What `write` writes to the stream that it is given.
std::string written(const std::function<void(std::FILE*)>& write);
