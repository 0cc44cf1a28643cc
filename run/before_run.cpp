#include "run/before_run.h"

#include "common/message.h"
#include "common/remedy.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <string>
#include <system_error>
#include <unistd.h>

namespace fs = std::filesystem;

void check_objects(const run_options& options) {
    for (const std::string& path : options.objects) {
        std::error_code error;
        if (!fs::exists(path, error))
            end_with_error("there is no %s to look for objects in; -objects needs directories or files",
                           printable(path).c_str());
    }
}

/// It may be a pipe, of which nothing must be taken yet.
static void check_input(const std::string& path) {
    std::error_code error;
    errno = EISDIR;
    if (fs::is_directory(path, error) || access(path.c_str(), R_OK) != 0)
        end_with_error("cannot read %s: %s", printable(path).c_str(), reason_of(errno).c_str());
}

/// The folder, or the one in which it would be made.
static void check_folder(const std::string& folder) {
    std::error_code error;
    fs::path nearest = fs::absolute(folder, error).lexically_normal();
    while (!fs::exists(nearest, error) && nearest.has_relative_path())
        nearest = nearest.parent_path();
    errno = ENOTDIR;
    if (!fs::is_directory(nearest, error) || access(nearest.c_str(), W_OK | X_OK) != 0)
        end_with_error("cannot %s the directory %s: %s; -o names another",
                       fs::exists(folder, error) ? "write to" : "make", printable(folder).c_str(),
                       std::strerror(errno));
}

void check_before_run(const run_options& options) {
    check_objects(options);
    for (const std::string& path : options.inputs)
        check_input(path);
    check_folder(options.folder);
}
