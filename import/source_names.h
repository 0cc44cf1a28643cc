// Names as the profile holds them: source files relative to a root directory, functions without the prefix
// that the compiler gives to local ones.
#pragma once

#include <string>
#include <string_view>

/// Sets the directory below which source names become relative; empty for none. It need not exist.
class source_names {
  public:
    explicit source_names(const std::string& root);

    /// The name of source file `path` in the profile: relative to the root when it lies below, else `path`.
    std::string name_in_profile(const std::string& path) const;

    /// Where the source file `name` of a profile is read from.
    std::string path_of(const std::string& name) const;

  private:
    std::string root_;          ///< absolute, normal form, ends in "/"; empty for none
    std::string physical_root_; ///< the same without symbolic links
};

/// The function's own name: "file.c:name" and "path;name" lose everything up to the separator.
std::string_view without_local_prefix(std::string_view name);

/// True when the static profile can hold `name`: not empty, no white space, no control character.
bool can_be_written(std::string_view name);
