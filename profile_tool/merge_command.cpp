#include "profile_tool/merge_command.h"

#include "common/platform.h"
#include "common/printable.h"
#include "common/remedy.h"
#include "profile/profile_pair.h"
#include "profile_tool/profile_merge.h"
#include "profile_tool/static_union.h"
#include "profile_tool/tool_message.h"

#include <algorithm>
#include <cerrno>
#include <ctime>
#include <filesystem>
#include <sys/stat.h>
#include <system_error>

namespace fs = std::filesystem;

/// Reads the static profiles that were named or, of the dynamic ones, those that have one. Gives back the
/// dynamic ones that have none.
static std::vector<std::string> read_static_profiles(const tool_options& options, static_union* all) {
    std::string error;
    std::vector<std::string> missing;
    const bool are_named = !options.spi.empty();
    for (const std::string& profile : are_named ? options.spi : options.profiles) {
        const std::string path = are_named ? profile : static_profile_beside(profile);
        struct stat status;
        if (!are_named && stat(path.c_str(), &status) != 0 && errno == ENOENT) {
            missing.push_back(profile);
            continue;
        }
        if (stat(profile.c_str(), &status) != 0)
            tool_error("cannot open " + printable(profile) + ": " + reason_of(errno));
        if (!all->add(path, are_named ? std::string() : profile, modification_time(status), &error))
            tool_error(error);
    }
    return missing;
}

static profile_names names_of(const std::string& output) {
    const std::string name = output.substr(0, output.size() - (output.ends_with(".dpi") ? 4 : 0));
    return {name + ".dpi", name + ".spi"};
}

/// The folder of the output, which is where there is room for it.
static std::string folder_of(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    return slash == std::string::npos ? "." : path.substr(0, slash + 1);
}

/// True when the profile to write is one of those that are read. Then nobody else may add to it in between.
/// Between the looks at the files another program may replace it: then only its name still tells.
static bool is_input(const tool_options& options, const std::string& path) {
    struct stat output;
    std::error_code error;
    const fs::path name = fs::canonical(path, error);
    if (error || stat(path.c_str(), &output) != 0)
        return false;
    return std::any_of(options.profiles.begin(), options.profiles.end(), [&](const std::string& profile) {
        struct stat input;
        if (stat(profile.c_str(), &input) != 0)
            return false;
        return (input.st_ino == output.st_ino && input.st_dev == output.st_dev) ||
               fs::canonical(profile, error) == name;
    });
}

/// The counts are as old as the newest of the profiles: so a source that was changed after that is noticed.
static void set_time(std::FILE* stream, std::int64_t time) {
    std::fflush(stream);
    const struct timespec times[2] = {
        {0, UTIME_OMIT},
        {static_cast<std::time_t>(time / 1'000'000'000), static_cast<long>(time % 1'000'000'000)}};
    static_cast<void>(futimens(fileno(stream), times)); // a disk without times does without
}

void merge_profiles(const tool_options& options) {
    profile_names names = names_of(options.output);
    profile_lock lock;
    std::string error;
    if (is_input(options, names.dpi) && !lock.wait(names.dpi, &error))
        tool_error(error);
    const struct stat* const locked = lock.is_held() ? &lock.locked() : nullptr;
    static_union routines(locked, options.newest);
    const std::vector<std::string> missing = read_static_profiles(options, &routines);
    if (routines.is_empty())
        names.spi.clear();
    profile_merge merge(folder_of(names.dpi), locked, options.newest);
    if (!merge.collect(options.profiles, &error))
        tool_error(error);
    const auto write_dpi = [&](std::FILE* stream, std::string* failure) {
        if (!merge.write(stream, failure))
            return false;
        set_time(stream, merge.newest_time());
        return true;
    };
    const auto write_spi = [&](std::FILE* stream, std::string*) {
        routines.write(stream);
        return true;
    };
    if (!PGOPTI_Replace_Profiles(names, lock, {write_dpi, write_spi}, &error))
        tool_error(error);
    struct stat status;
    if (routines.is_empty() && stat(names_of(options.output).spi.c_str(), &status) == 0)
        tool_warning(printable(names_of(options.output).spi) +
                     " stays as it was: none of the profiles has a static profile beside it; remove it, or "
                     "keep both files of each profile together");
    // Routines that never ran are in a static profile only.
    if (!routines.is_empty() && !missing.empty())
        tool_warning("profiles without a static profile beside them: " + std::to_string(missing.size()) +
                     ", the first is " + printable(missing.front()) + "; keep both files together");
}
