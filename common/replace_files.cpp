#include "common/replace_files.h"

#include "common/output_file.h"
#include "common/remedy.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

/// Those that have not come to their end. The process may exit above them.
static std::vector<file_replacement*> unfinished;

static void remove_leftovers() {
    for (file_replacement* const replacement : unfinished)
        replacement->remove_temporaries();
}

/// A name beside `target` that no other run uses, on this machine or on another one that shares the
/// directory.
static std::string temporary_name(const std::string& target) {
    const auto now = std::chrono::steady_clock::now().time_since_epoch().count();
    return target + "." + std::to_string(getpid()) + "-" + std::to_string(now) + ".tmp";
}

/// Where the links lead that a name may be. What is there need not exist; a circle of links stays as it is.
static std::string end_of_links(const std::string& name) {
    constexpr int kMostLinks = 40; // as many as the system follows
    std::filesystem::path path = name;
    for (int links = 0; links < kMostLinks; ++links) {
        std::error_code error;
        const std::filesystem::path next = std::filesystem::read_symlink(path, error);
        if (error)
            return path.string();
        path = path.parent_path() / next;
    }
    return name;
}

file_replacement::file_replacement(const std::vector<std::string>& targets) {
    static const int watching = std::atexit(remove_leftovers);
    static_cast<void>(watching);
    for (const std::string& target : targets)
        add(target);
    unfinished.push_back(this);
}

std::size_t file_replacement::add(const std::string& target) {
    const std::string place = end_of_links(target);
    const std::string name = temporary_name(place);
    files_.push_back({target, place, name, name + "~"});
    return files_.size() - 1;
}

std::vector<std::string> file_replacement::targets() const {
    std::vector<std::string> names;
    for (const file& each : files_)
        names.push_back(each.target);
    return names;
}

file_replacement::~file_replacement() {
    remove_temporaries();
    unfinished.erase(std::find(unfinished.begin(), unfinished.end(), this));
}

void file_replacement::remove_temporaries() {
    for (file& each : files_) {
        if (std::exchange(each.has_new, false))
            unlink(each.new_name.c_str());
        if (std::exchange(each.has_backup, false))
            unlink(each.backup.c_str());
    }
}

bool file_replacement::fail(const std::string& what, int error) {
    remove_temporaries();
    error_ = "cannot " + what;
    if (error != 0) // a write that failed earlier has left no reason
        error_.append(": ").append(reason_of(error));
    return false;
}

bool file_replacement::check_target(std::size_t i) {
    const std::string& target = files_[i].target;
    struct stat status;
    const bool found = stat(target.c_str(), &status) == 0;
    if (!found && errno != ENOENT)
        return fail("open " + target + " for output", errno);
    if (found && !S_ISREG(status.st_mode)) {
        error_ = target + " is not a regular file; name another";
        return false;
    }
    return true;
}

bool file_replacement::check_targets() {
    for (std::size_t i = 0; i < files_.size(); ++i)
        if (!check_target(i))
            return false;
    return true;
}

std::FILE* file_replacement::open(std::size_t i) {
    file& opened = files_[i];
    opened.has_new = true;
    std::FILE* const stream = open_output(opened.new_name.c_str(), "wbx");
    if (!stream)
        fail("create " + opened.target, errno);
    return stream;
}

/// "a and b", "a, b and c".
std::string file_replacement::all_targets() const {
    std::string text;
    for (std::size_t i = 0; i < files_.size(); ++i) {
        if (i > 0)
            text += i + 1 < files_.size() ? ", " : " and ";
        text += files_[i].target;
    }
    return text;
}

bool file_replacement::close(std::FILE* stream) {
    errno = 0;
    if (std::fflush(stream) != 0 || std::ferror(stream) || fsync(fileno(stream)) != 0)
        return fail("write " + all_targets(), errno);
    close_output(stream);
    return true;
}

/// Gives a file its name. The old one keeps a second name, unless it is the last: then nothing can fail
/// after.
bool file_replacement::rename_new(std::size_t i) {
    file& renamed = files_[i];
    if (i + 1 < files_.size())
        renamed.has_backup = link(renamed.place.c_str(), renamed.backup.c_str()) == 0;
    if (std::rename(renamed.new_name.c_str(), renamed.place.c_str()) != 0)
        return false;
    renamed.has_new = false;
    return true;
}

/// Takes back the first `count` files, the last of them first.
void file_replacement::take_back(std::size_t count) {
    for (std::size_t i = count; i-- > 0;) {
        file& renamed = files_[i];
        if (std::exchange(renamed.has_backup, false))
            std::rename(renamed.backup.c_str(), renamed.place.c_str());
        else
            unlink(renamed.place.c_str());
    }
}

bool file_replacement::replace() {
    // Nothing in here asks for memory until all is done or taken back.
    for (std::size_t i = 0; i < files_.size(); ++i) {
        if (rename_new(i))
            continue;
        const int error = errno;
        take_back(i);
        return fail("replace " + all_targets(), error);
    }
    remove_temporaries();
    return true;
}
