// Names as the profile holds them: source files relative to a root directory, functions without the prefix
// that the compiler gives to local ones.
#pragma once

#include "import/named_count.h"

#include <filesystem>
#include <functional>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>

/// `path` from the root of the file system on. Ends the run with a message when the working directory cannot
/// be told: a name taken for another would leave sources out.
std::filesystem::path absolute_path(const std::string& path);

/// Likewise without symbolic links, where it exists; where links lead nowhere, as absolute_path has it.
std::filesystem::path physical_path(const std::string& path);

class source_names {
  public:
    /// `root`: the directory below which source names become relative; empty for none. It need not exist.
    /// With a root, sources elsewhere, such as the headers of the system, are left out unless `all` is set.
    explicit source_names(const std::string& root, bool all = false);

    /// The name of source file `path` in the profile: relative to the root when it lies below, by its name
    /// or, where that leads through symbolic links, in truth; else `path`.
    std::string name_in_profile(const std::string& path) const;

    /// Whether the source file `name` of a profile belongs into it. Of relative names that were given as such
    /// nobody knows where they lie; they do.
    bool is_wanted(std::string_view name) const;

    /// Where the source file `name` of a profile is read from.
    std::string path_of(const std::string& name) const;

  private:
    const std::string& place_below_root(const std::string& folder) const;

    std::string root_;          ///< absolute, normal form, ends in "/"; empty for none
    std::string physical_root_; ///< the same without symbolic links
    bool all_;
    mutable std::unordered_map<std::string, std::string>
        places_; ///< of folders with another name: below the root, ending in "/"; "/" for others
};

/// The function's own name: "file.c:name" and "path;name" lose everything up to the separator.
std::string_view without_local_prefix(std::string_view name);

/// The source files that were left out for where they lie.
class left_out_sources {
  public:
    explicit left_out_sources(const std::string& root) : root_(root) {}

    void add(std::string_view name) { names_.emplace(name); }

    /// Ends the run when an import without any function has left out source files: then the root is wrong.
    void check_root() const;

    /// Says on standard error how many there were, if any.
    void print() const;

  private:
    std::string root_;
    std::set<std::string, std::less<>> names_; ///< each once, however many functions it has
};

/// Warns of source files that cannot be read, if there are any: their blocks stand in column 1.
void warn_of_unreadable_sources(const named_count& unreadable);
