#include "profile/profile_pair.h"

#include "common/replace_files.h"
#include "profile/checked_io.h"
#include "profile/dpi_writer.h"
#include "profile/spi_writer.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <sys/stat.h>

namespace {

/// The record lock of a profile that will be replaced.
class profile_lock {
  public:
    profile_lock() = default;
    profile_lock(const profile_lock&) = delete;
    profile_lock& operator=(const profile_lock&) = delete;
    ~profile_lock() { checked_fclose(stream_); }

    /// Waits until nobody reads or merges the profile at `path`, if there is one. False when that cannot be
    /// known, with a message in `*error`.
    bool wait(const std::string& path, std::string* error);

  private:
    bool is_current(const std::string& path, std::string* error);

    std::FILE* stream_ = nullptr; ///< the profile that is locked, if there is one
};

} // namespace

static std::string failure(const std::string& what, int error) {
    return "cannot " + what + ": " + std::strerror(error);
}

/// True when the locked file is still the one of that name: another program may have replaced it while this
/// one waited, and then the lock is of no use. `*error` is set when it cannot be told.
bool profile_lock::is_current(const std::string& path, std::string* error) {
    struct stat locked;
    struct stat current;
    if (fstat(fileno(stream_), &locked) != 0) {
        *error = failure("examine " + path, errno);
        return false;
    }
    const bool found = stat(path.c_str(), &current) == 0;
    if (!found && errno != ENOENT)
        *error = failure("examine " + path, errno);
    return found && locked.st_ino == current.st_ino && locked.st_dev == current.st_dev;
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

/// Writes the new content of both files.
static bool write_contents(const DPI_WRITER& dpi, const PGOPTI_PROFILE& profile, file_replacement& files) {
    std::FILE* stream = files.open(0);
    if (!stream)
        return false;
    dpi.write(stream);
    if (!files.close(stream))
        return false;
    stream = files.open(1);
    if (!stream)
        return false;
    PGOPTI_SPI_Write(stream, profile);
    return files.close(stream);
}

bool PGOPTI_Write_Profiles(const PGOPTI_PROFILE& profile, const PGOPTI_RECORD_LAYOUT& layout,
                           const std::string& dpi_file, const std::string& spi_file, std::string* error) {
    error->clear();
    const DPI_WRITER dpi(profile, layout);
    if (dpi.too_large()) {
        *error = "function " + dpi.too_large()->name + " has too many blocks";
        return false;
    }
    profile_lock lock;
    file_replacement files({dpi_file, spi_file});
    if (files.check_targets() && !lock.wait(dpi_file, error))
        return false;
    if (!files.error().empty() || !write_contents(dpi, profile, files) || !files.replace()) {
        *error = files.error();
        return false;
    }
    return true;
}
