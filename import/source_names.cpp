#include "import/source_names.h"

#include "common/directory_prefix.h"
#include "common/message.h"
#include "common/remedy.h"

#include <filesystem>
#include <new>
#include <system_error>

namespace fs = std::filesystem;

fs::path absolute_path(const std::string& path) {
    std::error_code error;
    fs::path absolute = fs::absolute(path, error);
    if (error)
        end_with_error("cannot tell where %s is: %s", printable(path).c_str(), reason_of(error).c_str());
    return absolute;
}

fs::path physical_path(const std::string& path) {
    std::error_code error;
    fs::path physical = fs::weakly_canonical(path, error);
    if (error == std::errc::not_enough_memory)
        throw std::bad_alloc();
    return error ? absolute_path(path) : physical;
}

source_names::source_names(const std::string& root, bool all) : all_(all) {
    if (root.empty())
        return;
    root_ = directory_prefix(absolute_path(root));
    physical_root_ = directory_prefix(physical_path(root_));
}

/// Where a folder lies below the root, whatever links lead to it; files of one folder are many.
const std::string& source_names::place_below_root(const std::string& folder) const {
    const auto [entry, added] = places_.try_emplace(folder, "/");
    if (added) {
        const std::string physical = directory_prefix(physical_path(folder));
        if (physical.starts_with(physical_root_))
            entry->second = physical.substr(physical_root_.size());
    }
    return entry->second;
}

std::string source_names::name_in_profile(const std::string& path) const {
    if (root_.empty() || path.empty() || path.front() != '/')
        return path;
    std::string normal = fs::path(path).lexically_normal().string();
    for (const std::string* prefix : {&root_, &physical_root_}) {
        if (normal.size() > prefix->size() && normal.starts_with(*prefix))
            return normal.substr(prefix->size());
    }
    const std::size_t name = normal.rfind('/') + 1;
    if (name == normal.size())
        return path;
    const std::string& folder = place_below_root(normal.substr(0, name));
    return folder == "/" ? path : folder + normal.substr(name);
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
        end_with_error(
            "all source files lie outside of %s (-root names the directory of the sources; -all keeps "
            "those outside)",
            printable(root_).c_str());
}

void left_out_sources::print() const {
    if (!names_.empty())
        print_note(names_.size() == 1 ? "%zu source file outside of %s was left out (-all keeps it)"
                                      : "%zu source files outside of %s were left out (-all keeps them)",
                   names_.size(), printable(root_).c_str());
}

void warn_of_unreadable_sources(const named_count& unreadable) {
    if (unreadable.number != 0)
        print_warning(unreadable.number == 1
                          ? "%llu source file cannot be read, %s; its figures are kept "
                            "(run where relative names lead to it)"
                          : "%llu source files cannot be read, the first is %s; their figures are kept "
                            "(run where relative names lead to them)",
                      unreadable.shown(), printable(unreadable.first).c_str());
}
