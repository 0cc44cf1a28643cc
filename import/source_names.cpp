#include "import/source_names.h"

#include "import/import_message.h"

#include <filesystem>
#include <system_error>

namespace fs = std::filesystem;

/// An absolute path in normal form with one "/" at its end.
static std::string as_prefix(const fs::path& path) {
    std::string text = path.lexically_normal().string();
    if (text.empty() || text.back() != '/')
        text += '/';
    return text;
}

source_names::source_names(const std::string& root, bool all) : all_(all) {
    if (root.empty())
        return;
    std::error_code error;
    const fs::path absolute = fs::absolute(root, error);
    root_ = as_prefix(error ? fs::path(root) : absolute);
    const fs::path physical = fs::weakly_canonical(root_, error);
    physical_root_ = error ? root_ : as_prefix(physical);
}

std::string source_names::name_in_profile(const std::string& path) const {
    if (root_.empty() || path.empty() || path.front() != '/')
        return path;
    std::string normal = fs::path(path).lexically_normal().string();
    for (const std::string* prefix : {&root_, &physical_root_}) {
        if (normal.size() > prefix->size() && normal.starts_with(*prefix))
            return normal.substr(prefix->size());
    }
    return path;
}

bool source_names::is_wanted(std::string_view name) const {
    return root_.empty() || all_ || !name.starts_with('/');
}

std::string source_names::path_of(const std::string& name) const {
    if (root_.empty() || name.empty() || name.front() == '/')
        return name;
    return root_ + name;
}

std::string_view without_local_prefix(std::string_view name) {
    for (const char separator : {';', ':'}) {
        if (name.find(separator) == std::string_view::npos) // much faster than from the end; mostly true
            continue;
        const std::size_t own = name.rfind(separator) + 1;
        return own == name.size() ? name : name.substr(own);
    }
    return name;
}

void left_out_sources::check_root() const {
    if (!names_.empty())
        import_error(
            "all source files lie outside of %s (-root names the directory of the sources; -all keeps "
            "those outside)",
            printable(root_).c_str());
}

void left_out_sources::print() const {
    if (!names_.empty())
        import_note("%zu source files outside of %s were left out (-all keeps them)", names_.size(),
                    printable(root_).c_str());
}
