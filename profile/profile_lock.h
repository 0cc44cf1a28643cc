// The record lock of a profile that will be replaced.
#pragma once

#include <cstdio>
#include <string>
#include <sys/stat.h>

/// Holds the lock until the end of its life.
class profile_lock {
  public:
    profile_lock() = default;
    profile_lock(const profile_lock&) = delete;
    profile_lock& operator=(const profile_lock&) = delete;
    ~profile_lock();

    /// Waits until nobody reads or merges the profile at `path`, if there is one. False when that cannot be
    /// known, with a message in `*error`.
    bool wait(const std::string& path, std::string* error);

    /// Whether there is a file that wait() has locked.
    bool is_held() const { return stream_ != nullptr; }

    /// The file that is locked, for who reads it without waiting for himself.
    const struct stat& locked() const { return locked_; }

  private:
    bool is_current(const std::string& path, std::string* error);

    std::FILE* stream_ = nullptr; ///< the profile that is locked, if there is one
    struct stat locked_ = {};
};
