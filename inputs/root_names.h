// Names of source files relative to a root directory, as readers of coverage expect them.
#pragma once

#include <string>

class root_names {
  public:
    /// `root`: a directory, relative to the working directory or absolute; empty for the working directory.
    /// Where that cannot be found out the run ends with a message and exit status 1.
    explicit root_names(const std::string& root);

    /// The root, absolute and in normal form, without "/" at its end unless it is the file system's.
    const std::string& root() const { return shown_root_; }

    /// Sets `*name` to the name of the source file `path` of a profile: relative to the root when it lies
    /// below it, symbolic links resolved where that takes it there; else absolute. True for the former.
    bool resolve(const std::string& path, std::string* name) const;

  private:
    std::string working_directory_; ///< absolute, ends in "/"
    std::string root_;              ///< absolute, normal form, ends in "/"
    std::string physical_root_;     ///< the same without symbolic links
    std::string shown_root_;
};
