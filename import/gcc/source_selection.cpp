#include "import/gcc/source_selection.h"

#include "common/message.h"
#include "common/remedy.h"

#include <filesystem>
#include <system_error>

namespace fs = std::filesystem;

static bool is_there(const fs::path& path) {
    std::error_code error;
    const bool exists = fs::exists(path, error);
    for (const std::errc absent : {std::errc::permission_denied, std::errc::filename_too_long,
                                   std::errc::too_many_symbolic_link_levels}) {
        if (error == absent)
            return false;
    }
    if (error) // not the file's fault; another name must not be taken for that
        end_with_error("cannot examine %s: %s", printable(path.string()).c_str(), reason_of(error).c_str());
    return exists;
}

std::optional<std::string> source_selection::find_name(std::string_view directory, std::string_view file) {
    fs::path path = file;
    if (path.is_relative() && !directory.empty()) {
        path = (fs::path(directory) / file).lexically_normal();
        if (!root_.empty() && !is_there(path)) {
            const fs::path below_root = (absolute_path(root_) / file).lexically_normal();
            if (is_there(below_root))
                path = below_root;
        }
    }
    const std::string name = names_.name_in_profile(path.lexically_normal().string());
    if (names_.is_wanted(name))
        return name;
    left_out_.add(name);
    return std::nullopt;
}

/// A root that symbolic links lead to has a second name.
std::string source_selection::prefix() const {
    if (root_.empty() || all_ || !is_there(root_))
        return "";
    const fs::path physical = physical_path(root_);
    const std::string lexical = (absolute_path(root_) / "").lexically_normal().string();
    return lexical == (physical / "").string() && lexical.size() > 1 ? physical.string() : "";
}

const std::optional<std::string>& source_selection::name_of(std::string_view directory,
                                                            std::string_view file) {
    pair_.assign(directory);
    pair_ += '\0';
    pair_ += file;
    const auto found = known_.find(pair_);
    if (found != known_.end())
        return found->second;
    return known_.emplace(pair_, find_name(directory, file)).first->second;
}
