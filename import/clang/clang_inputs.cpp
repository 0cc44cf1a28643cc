#include "import/clang/clang_inputs.h"

#include "common/little_endian.h"
#include "common/message.h"
#include "common/progress_line.h"
#include "common/remedy.h"
#include "import/build_folders.h"
#include "import/clang/file_kind.h"
#include "import/clang/indexed_profile.h"
#include "import/clang/input_error.h"
#include "import/clang/join_reader.h"
#include "import/clang/profile_variant.h"

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <string_view>
#include <system_error>
#include <utility>

namespace fs = std::filesystem;

constexpr std::size_t kProfileStart = 16; ///< magic number and version

static bool is_profile_name(const fs::path& path) {
    return path.extension() == ".profraw" || path.extension() == ".profdata";
}

/// What a directory holds. Other programs may work there: what is gone is passed over.
static void list_directory(const fs::path& directory, std::vector<std::string>* files,
                           std::vector<fs::path>* directories) {
    std::error_code error;
    fs::directory_iterator entry(directory, fs::directory_options::skip_permission_denied, error);
    for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
        std::error_code gone; // what cannot be examined is neither
        const fs::file_type type = entry->symlink_status(gone).type();
        if (type == fs::file_type::regular)
            files->push_back(entry->path().string());
        else if (type == fs::file_type::directory && !is_compiler_test(entry->path()))
            directories->push_back(entry->path());
    }
    if (error && error != std::errc::no_such_file_or_directory)
        end_with_error("cannot search %s: %s", printable(directory.string()).c_str(),
                       reason_of(error).c_str());
}

std::vector<std::string> files_below(const std::string& directory) {
    std::vector<std::string> files;
    std::vector<fs::path> open = {directory};
    while (!open.empty()) {
        const fs::path next = std::move(open.back());
        open.pop_back();
        list_directory(next, &files, &open);
    }
    std::sort(files.begin(), files.end());
    return files;
}

/// The kind of a file that was found; `other` for one that cannot be read and may be someone else's.
static file_kind kind_of_found(const std::string& path) {
    try {
        file_bytes file(path);
        return kind_of(&file);
    } catch (const not_of_interest&) {
        return file_kind::other;
    } catch (const input_error& failure) {
        end_with_error("%s %s", printable(path).c_str(),
                       with_remedy(failure.what(), "look at the file").c_str());
    }
}

static bool holds_programs(file_kind kind) {
    return kind == file_kind::program || kind == file_kind::archive;
}

void clang_inputs::search_programs(const std::string& directory) {
    for (const std::string& path : files_below(directory)) {
        if (holds_programs(kind_of_found(path)))
            programs_.push_back({path, false});
    }
}

/// What is wrong with a profile that was found and steers optimisation, as a source tree may hold, too; empty
/// for those that may hold counters of source coverage.
static std::string other_purpose(const std::string& path) {
    try {
        file_bytes file(path);
        if (file.size() < kProfileStart)
            return {};
        const std::string_view start = file.at(0, kProfileStart);
        if (start[0] == '\x81' || is_indexed_profile(start)) // else another order of bytes
            checked_profile_version(little_endian_at<std::uint64_t>(start, 8));
    } catch (const file_failure&) { // the reader of profiles has the words
    } catch (const input_error& kind) {
        return printable(path) + " " + kind.what();
    }
    return {};
}

void clang_inputs::search(const std::string& directory) {
    const std::size_t programs = programs_.size();
    const std::size_t profiles = profiles_.size();
    std::vector<std::string> others;
    bool raw = false;
    bool merged = false;
    for (const std::string& path : files_below(directory)) {
        const file_kind kind = kind_of_found(path);
        if (holds_programs(kind))
            programs_.push_back({path, false});
        if (!is_profile_name(path) || (kind != file_kind::profile && kind != file_kind::empty))
            continue;
        if (std::string purpose = other_purpose(path); !purpose.empty()) {
            others.push_back(std::move(purpose));
            continue;
        }
        profiles_.push_back(path);
        (fs::path(path).extension() == ".profraw" ? raw : merged) = true;
    }
    if (programs_.size() == programs && profiles_.size() == profiles && !others.empty())
        end_with_error("%s", with_remedy(others.front(), "name others").c_str());
    for (const std::string& other : others)
        print_warning("%s; it is passed over", other.c_str());
    if (programs_.size() == programs && profiles_.size() == profiles)
        end_with_error("%s holds no programs and no profiles; name a directory that does, or the files",
                       printable(directory).c_str());
    if (raw && merged)
        print_warning("%s holds both raw and merged profiles, whose counts are added up; name one "
                      "kind where they are of the same runs",
                      printable(directory).c_str());
}

bool clang_inputs::take(const std::string& path) {
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (status.type() == fs::file_type::directory) {
        search(path);
        return true;
    }
    if (status.type() != fs::file_type::regular)
        return false;
    file_kind kind = file_kind::other;
    try {
        file_bytes file(path);
        kind = kind_of(&file);
    } catch (const input_error&) {
        return false; // the reader of exports has the words
    }
    if (kind == file_kind::foreign_program)
        end_with_error("%s is a program of a kind that is not supported; give the output of llvm-cov export",
                       printable(path).c_str());
    if (kind == file_kind::other && fs::path(path).extension() == ".proftext")
        end_with_error("%s is a profile as text; give the raw or merged profile", printable(path).c_str());
    if (kind == file_kind::profile || (kind == file_kind::empty && is_profile_name(path))) {
        profiles_.push_back(path);
        return true;
    }
    if (kind == file_kind::other || kind == file_kind::empty)
        return false;
    programs_.push_back({path, true});
    return true;
}

void clang_inputs::take_programs(const std::string& path) {
    std::error_code error;
    if (fs::is_directory(path, error))
        search_programs(path);
    else if (!take(path))
        end_with_error("%s is no program, library, object file or archive", printable(path).c_str());
}

void clang_inputs::read(
    const std::function<void(const export_function&, const std::string& input)>& on_function,
    export_function* memory) {
    if (profiles_.empty())
        end_with_error(
            "no profile given: name the .profraw files that the program's runs wrote, or the .profdata "
            "file that was made of them");
    join_reader reader;
    for (progress_line progress("profiles read", profiles_.size()); const std::string& profile : profiles_) {
        reader.read_profile(profile);
        progress.step();
    }
    if (programs_.empty())
        reader.find_programs(files_below("."));
    for (progress_line progress("programs read", programs_.size()); const program& each : programs_) {
        reader.read_program(each.path, each.named);
        progress.step();
    }
    reader.check_programs();
    for (const std::string& profile : profiles_) {
        if (reader.join().lacks_names())
            reader.read_names(profile);
    }
    reader.release_files();
    reader.join().hand_out(on_function, memory);
}
