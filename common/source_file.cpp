#include "common/source_file.h"

#include "common/fatal.h"
#include "common/message.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <iterator>
#include <new>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

static void report_unreadable(const char* path) {
    print_error("cannot read %s", path);
}

/// Called after a failed call: whether there is no such file for this user. Any other reason, such as a disk
/// error or a lack of descriptors, would make the report tell of a missing file that is there.
static bool is_missing() {
    static const int reasons[] = {ENOENT, ENOTDIR, EACCES, ELOOP, ENAMETOOLONG};
    return std::find(std::begin(reasons), std::end(reasons), errno) != std::end(reasons);
}

/// Opens a regular file for reading; -1 when that fails. The run goes on without the file then, but where it
/// may be there it does not end well. A device or FIFO is not even opened, since that could block or have an
/// effect.
static int open_regular(const char* path, std::size_t* size) {
    struct stat status;
    int descriptor = -1;
    if (stat(path, &status) == 0) {
        if (!S_ISREG(status.st_mode))
            return -1;
        descriptor = open(path, O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    }
    if (descriptor == -1 || fstat(descriptor, &status) != 0) {
        if (!is_missing()) {
            report_unreadable(path);
            pgt_Incomplete();
        }
        if (descriptor != -1)
            close(descriptor);
        return -1;
    }
    if (!S_ISREG(status.st_mode)) {
        close(descriptor);
        return -1;
    }
    *size = static_cast<std::size_t>(status.st_size);
    return descriptor;
}

source_loader::~source_loader() {
    std::free(bytes_);
}

/// Makes room for `size` bytes in all.
void source_loader::reserve(std::size_t size) {
    if (size <= capacity_)
        return;
    char* bytes = static_cast<char*>(std::realloc(bytes_, size));
    if (!bytes)
        throw std::bad_alloc(); // infeasible
    bytes_ = bytes;
    capacity_ = size;
}

/// Reads to the end of the file; false on a read error.
bool source_loader::read_all(int descriptor, std::size_t expected) {
    reserve(expected + 1); // one more than the file has, so that its end is seen without growing
    for (size_ = 0;;) {
        if (size_ == capacity_)
            reserve(capacity_ * 2);
        const ssize_t count = read(descriptor, bytes_ + size_, capacity_ - size_);
        if (count == 0)
            return true;
        if (count > 0)
            size_ += static_cast<std::size_t>(count);
        else if (errno != EINTR)
            return false;
    }
}

bool source_loader::load(const char* path, std::string_view* text) {
    if (!loaded_ || path_ != path) {
        release();
        path_ = path;
        std::size_t size = 0;
        const bool elsewhere = !folder_.empty() && path[0] != '/';
        const int descriptor = open_regular(elsewhere ? (folder_ + path).c_str() : path, &size);
        if (descriptor != -1) {
            const bool complete = read_all(descriptor, size);
            close(descriptor);
            if (!complete) {
                report_unreadable(path);
                pgt_Exit(1);
            }
            found_ = true;
        }
        loaded_ = true;
    }
    *text = found_ ? std::string_view(bytes_, size_) : std::string_view();
    return found_;
}

void source_loader::set_folder(const std::string& folder) {
    release();
    folder_ = folder.empty() ? folder : folder + "/";
}

void source_loader::release() {
    loaded_ = false;
    found_ = false;
}

source_loader& run_sources() {
    static source_loader loader;
    return loader;
}

bool load_source(const char* path, std::string_view* text) {
    return run_sources().load(path, text);
}

void release_source() {
    run_sources().release();
}
