#include "common/input_guard.h"

#include "common/message.h"

#include <sys/stat.h>

void input_guard::add(const std::string& path) {
    struct stat status;
    if (stat(path.c_str(), &status) == 0)
        inputs_.emplace(status.st_dev, status.st_ino);
}

void input_guard::check(const std::string& target) const {
    struct stat status;
    if (stat(target.c_str(), &status) == 0 && inputs_.contains({status.st_dev, status.st_ino}))
        end_with_error("%s is read in this run and must not be written over; name another file",
                       printable(target).c_str());
}
