#include "profile/checked_io.h"

#include "common/fatal.h"
#include "common/message.h"
#include "common/platform.h"
#include "common/remedy.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

/// The part of a profile behind the counts of runs and records. Deliberate: the words before it are outside
/// the lock, so that they can be looked at while a program merges its counts.
constexpr off_t kLockStart = 16;

/// Where instrumented programs merge their counts into one file, a half-merged profile must not be read.
static int wait_for_lock(int descriptor, short type) {
    struct flock lock;
    std::memset(&lock, 0, sizeof lock);
    lock.l_type = type;
    lock.l_whence = SEEK_SET;
    lock.l_start = kLockStart;
    lock.l_len = 0;
    return wait_for_record_lock(descriptor, &lock);
}

static int open_flags(const char* mode) {
    int flags = 0;
    if (std::strchr(mode, 'a'))
        flags = O_CREAT | O_APPEND;
    else if (std::strchr(mode, 'w'))
        flags = O_CREAT | O_TRUNC;
    if (std::strchr(mode, '+'))
        return flags | O_RDWR;
    // Without blocking, as a FIFO that nobody writes to can be no profile.
    return flags | (std::strchr(mode, 'r') ? O_RDONLY | O_NONBLOCK : O_WRONLY);
}

std::FILE* checked_fopen(const char* path, const char* mode) {
    const bool exclusive = std::strpbrk(mode, "wa+") != nullptr;
    const char* kind = exclusive ? "exclusive" : "shared";
    const int descriptor = open(path, open_flags(mode) | O_CLOEXEC, 0600);
    if (descriptor == -1)
        return nullptr;
    if (wait_for_lock(descriptor, exclusive ? F_WRLCK : F_RDLCK) == -1) {
        if (errno != EACCES && errno != ENOLCK) {
            print_error("%s lock of %s failed, code = %d", kind, path, errno);
            close(descriptor);
            return nullptr;
        }
        print_warning("%s lock of %s failed (access denied); I/O on file is unsafe in a parallel build "
                      "environment",
                      kind, path);
    }
    std::FILE* stream = fdopen(descriptor, mode);
    if (!stream)
        close(descriptor);
    return stream;
}

void checked_fclose(std::FILE* stream) {
    if (stream)
        std::fclose(stream);
}

/// The words of the programs beside vexcov. errno is 0 where the file ends too early, and EINVAL where it
/// names a place that no file has.
[[noreturn]] static void fail_named(const char* fileName) {
    const std::string name = fileName ? printable(fileName) : "a profile";
    if (errno == 0 || errno == EINVAL)
        end_with_error("%s is cut short or damaged; import it again", name.c_str());
    end_with_error("cannot read %s: %s", name.c_str(), reason_of(errno).c_str());
}

[[noreturn]] static void fail(const char* operation, const char* fileName) {
    if (messages_are_named())
        fail_named(fileName);
    if (fileName) {
        std::perror(fileName);
        std::fprintf(stderr, "FATAL ERROR: %s on file %s failed\n", operation, fileName);
    } else {
        std::perror(nullptr);
        std::fprintf(stderr, "FATAL ERROR: %s on file failed\n", operation);
    }
    std::fflush(stderr);
    pgt_Exit(1);
}

void checked_short_read(const char* fileName) {
    errno = 0; // so that the text for a file that ends early does not depend on what failed before
    fail("fread", fileName);
}

void checked_bad_seek(const char* fileName) {
    errno = EINVAL;
    fail("fseek", fileName);
}

void checked_fread(void* buffer, std::size_t size, std::size_t count, std::FILE* stream,
                   const char* fileName) {
    errno = 0;
    if (std::fread(buffer, size, count, stream) != count)
        fail("fread", fileName);
}

void checked_fseek(std::FILE* stream, long offset, int whence, const char* fileName) {
    errno = 0;
    if (std::fseek(stream, offset, whence) != 0)
        fail("fseek", fileName);
}

long checked_ftell(std::FILE* stream, const char* fileName) {
    errno = 0;
    const long position = std::ftell(stream);
    if (position == -1)
        fail("ftell", fileName);
    return position;
}
