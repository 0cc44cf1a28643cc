#include "run/scratch_folder.h"

#include "common/message.h"
#include "common/remedy.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <system_error>

namespace fs = std::filesystem;

/// TMPDIR, or what is usual. The runtime of clang takes a percent sign in a path for one of its patterns.
static std::string temporary_folder() {
    const char* const chosen = std::getenv("TMPDIR");
    if (!chosen || *chosen == '\0')
        return "/tmp";
    std::error_code error;
    const std::string path = (fs::absolute(chosen, error) / "").lexically_normal().parent_path().string();
    return error || path.find('%') != std::string::npos ? "/tmp" : path;
}

scratch_folder::scratch_folder() : path_(temporary_folder() + "/vexcov-run-XXXXXX") {
    if (!mkdtemp(path_.data()))
        end_with_error("cannot make a directory for the counts in %s: %s; TMPDIR names another place",
                       printable(fs::path(path_).parent_path().string()).c_str(), std::strerror(errno));
}

scratch_folder::~scratch_folder() {
    std::error_code error;
    fs::remove_all(path_, error);
    if (error)
        print_warning("cannot remove %s: %s", printable(path_).c_str(), reason_of(error).c_str());
}
