#include "common/scratch_file.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>
#include <vector>

file_ptr open_scratch_file(const std::string& directory) {
    std::string name = directory + "/vexcov-XXXXXX.tmp";
    const int descriptor = mkostemps(name.data(), 4, O_CLOEXEC);
    if (descriptor == -1)
        return nullptr;
    unlink(name.c_str());
    file_ptr stream(fdopen(descriptor, "w+b"));
    if (!stream) {
        const int error = errno;
        close(descriptor);
        errno = error;
    }
    return stream;
}

bool rewind_scratch_file(std::FILE* stream) {
    errno = 0;
    return std::fflush(stream) == 0 && std::ferror(stream) == 0 && std::fseek(stream, 0, SEEK_SET) == 0;
}

bool copy_scratch_file(std::FILE* from, std::FILE* to) {
    std::vector<char> piece(std::size_t{1} << 16);
    errno = 0;
    while (const std::size_t size = std::fread(piece.data(), 1, piece.size(), from))
        std::fwrite(piece.data(), 1, size, to);
    return std::ferror(from) == 0;
}
