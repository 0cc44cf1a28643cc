#include "profile/profile_lock.h"

#include "common/remedy.h"
#include "profile/checked_io.h"

#include <cerrno>

static std::string failure(const std::string& what, int error) {
    return "cannot " + what + ": " + reason_of(error);
}

/// True when the locked file is still the one of that name: another program may have replaced it while this
/// one waited, and then the lock is of no use. `*error` is set when it cannot be told.
bool profile_lock::is_current(const std::string& path, std::string* error) {
    struct stat current;
    if (fstat(fileno(stream_), &locked_) != 0) {
        *error = failure("examine " + path, errno);
        return false;
    }
    const bool found = stat(path.c_str(), &current) == 0;
    if (!found && errno != ENOENT)
        *error = failure("examine " + path, errno);
    return found && locked_.st_ino == current.st_ino && locked_.st_dev == current.st_dev;
}

bool profile_lock::wait(const std::string& path, std::string* error) {
    for (;;) {
        errno = 0;
        stream_ = checked_fopen(path.c_str(), "r+b");
        if (!stream_ && errno == ENOENT)
            return true;
        if (!stream_) {
            *error = failure("open " + path + " for output", errno);
            return false;
        }
        if (is_current(path, error))
            return true;
        if (!error->empty())
            return false;
        checked_fclose(stream_);
        stream_ = nullptr;
    }
}

profile_lock::~profile_lock() {
    checked_fclose(stream_);
}
