// The directory of everything that a run needs and nobody wants to keep.
#pragma once

#include <string>

/// Is made below the directory of temporary files, and removed with all that is in it at the end of the
/// object's life.
class scratch_folder {
  public:
    /// Ends the run with a message when it cannot be made.
    scratch_folder();
    scratch_folder(const scratch_folder&) = delete;
    scratch_folder& operator=(const scratch_folder&) = delete;
    ~scratch_folder();

    /// The absolute path of a file or directory in it, which need not exist.
    std::string path_of(const std::string& name) const { return path_ + "/" + name; }

  private:
    std::string path_;
};
