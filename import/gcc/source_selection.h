// Which source files of gcov's documents go into the profile, and under which name.
#pragma once

#include "import/source_names.h"

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

class source_selection {
  public:
    /// `root`: the directory below which the program's own sources lie; empty for none. With a root, files
    /// elsewhere, such as the headers of the system, are left out unless `all` is set.
    source_selection(const std::string& root, bool all)
        : names_(root, all), left_out_(root), root_(root), all_(all) {}

    /// The name in the profile of `file`, which was compiled in `directory`; nothing when it is left out.
    /// A relative name is taken from that directory or, where there is no such file, from the root: compilers
    /// can be told to write other names than those they read. The result is valid until the next call.
    const std::optional<std::string>& name_of(std::string_view directory, std::string_view file);

    /// The directory outside of which no source file with an absolute name is needed, without a slash at its
    /// end; empty when there is none.
    std::string prefix() const;

    const source_names& names() const { return names_; }

    /// What was left out; of files that gcov is not to look at others tell.
    left_out_sources& left_out() { return left_out_; }

  private:
    std::optional<std::string> find_name(std::string_view directory, std::string_view file);

    source_names names_;
    left_out_sources left_out_;
    std::string root_;
    bool all_;
    std::string pair_; ///< directory and file asked for
    std::unordered_map<std::string, std::optional<std::string>>
        known_; ///< by such pairs: objects share headers
};
