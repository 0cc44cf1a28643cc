// The inputs that are clang's own files: programs, shared libraries, object files, archives and profiles,
// named or found in a directory. What a file is shows in its first bytes.
#pragma once

#include "import/clang_export.h"

#include <functional>
#include <string>
#include <vector>

class clang_inputs {
  public:
    /// Takes the file or directory `path` to read it later. False: it is none of clang's own files, so that
    /// it may be an export of llvm-cov. A kind of program that is not supported, and a directory without
    /// programs and profiles, end the run with a message.
    bool take(const std::string& path);

    /// Takes the programs, libraries and archives of a directory and none of its profiles, or the file `path`
    /// of clang's own. A file of another kind ends the run with a message.
    void take_programs(const std::string& path);

    /// Whether nothing was taken, and whether no program was.
    bool empty() const { return programs_.empty() && profiles_.empty(); }
    bool without_programs() const { return programs_.empty(); }

    /// Reads what was taken, joins programs with profiles, and calls `on_function` for each function, with
    /// the program that it is in, as messages show it. Programs of profiles without any are looked for below
    /// the working directory. The function object is `*memory`. What is damaged, not supported or missing
    /// ends the run with a message.
    void read(const std::function<void(const export_function&, const std::string& input)>& on_function,
              export_function* memory);

  private:
    struct program {
        std::string path;
        bool named; ///< on the command line; else it was found and may turn out to be none of ours
    };

    void search(const std::string& directory);
    void search_programs(const std::string& directory);

    std::vector<program> programs_;
    std::vector<std::string> profiles_;
};

/// The regular files below a directory in the order of their names. Links are not followed: what they lead to
/// would come twice, nor is CMake's own test of the compiler (build_folders.h). What goes away meanwhile is
/// passed over; a directory that cannot be read ends the run with a message.
std::vector<std::string> files_below(const std::string& directory);
