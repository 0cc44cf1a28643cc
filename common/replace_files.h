// Replacing files, together or not at all.
//
// Each new file is written under a temporary name beside the one that it will replace, which is that at the
// end of symbolic links; when all are complete, they are renamed. Whatever goes wrong before leaves what was
// there. Temporary files go away at the end of the object's life, and when the process exits without getting
// there; only a killed process leaves them.
#pragma once

#include <cstddef>
#include <cstdio>
#include <string>
#include <vector>

/// Functions that return false, or null, have removed the temporary files; error() tells what failed, as a
/// message without an end of line. The caller then gives up.
class file_replacement {
  public:
    explicit file_replacement(const std::vector<std::string>& targets);
    file_replacement(const file_replacement&) = delete;
    file_replacement& operator=(const file_replacement&) = delete;
    ~file_replacement();

    /// One more target, behind the others; gives its place. Not once one of them has its name.
    std::size_t add(const std::string& target);

    /// False when a target is there and is not a regular file, as devices and directories must not be
    /// replaced, or cannot be examined.
    bool check_targets();

    /// Opens the new content of target `i`, a stream of output_file.h; null when it cannot be created.
    std::FILE* open(std::size_t i);

    /// Brings what was written to the disk and closes the stream. One that lost something stays open for
    /// pgt_Exit, which says so, too.
    bool close(std::FILE* stream);

    /// Renames all files in the order of the targets. When one cannot be renamed, those before it are taken
    /// back.
    bool replace();

    /// Removes the temporary files that are there.
    void remove_temporaries();

    const std::string& error() const { return error_; }

  private:
    struct file {
        std::string target;   ///< as it was given, for messages
        std::string place;    ///< where symbolic links lead
        std::string new_name; ///< of the new content
        std::string backup;   ///< second name of the old content
        bool has_new = false;
        bool has_backup = false;
    };

    bool fail(const std::string& what, int error);
    bool rename_new(std::size_t i);
    void take_back(std::size_t count);
    std::string all_targets() const;

    std::vector<file> files_;
    std::string error_;
};
