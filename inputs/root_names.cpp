#include "inputs/root_names.h"

#include "common/directory_prefix.h"
#include "common/message.h"
#include "common/remedy.h"

#include <filesystem>
#include <system_error>

namespace fs = std::filesystem;

/// `path` without symbolic links, or as it is where that cannot be known.
static fs::path physical(const fs::path& path) {
    std::error_code error;
    fs::path resolved = fs::weakly_canonical(path, error);
    return error ? path : resolved;
}

root_names::root_names(const std::string& root) {
    std::error_code error;
    const fs::path here = fs::current_path(error);
    if (error)
        end_with_error("cannot find out the working directory: %s", reason_of(error).c_str());
    working_directory_ = directory_prefix(here);
    root_ = directory_prefix(fs::path(working_directory_) / root);
    physical_root_ = directory_prefix(physical(root_));
    shown_root_ = root_.size() > 1 ? root_.substr(0, root_.size() - 1) : root_;
}

bool root_names::resolve(const std::string& path, std::string* name) const {
    const fs::path absolute = (fs::path(working_directory_) / path).lexically_normal();
    *name = absolute.string();
    const auto take = [name](const std::string& candidate, const std::string& root) {
        if (candidate.size() <= root.size() || !candidate.starts_with(root))
            return false;
        *name = candidate.substr(root.size());
        return true;
    };
    return take(absolute.string(), root_) || take(physical(absolute).string(), physical_root_);
}
