#include "import/gcc/compressed_input.h"

#include "common/message.h"
#include "common/remedy.h"

#include <cerrno>
#include <unistd.h>
#include <zlib.h>

constexpr unsigned kPieceSize = 1U << 18;

void compressed_input::closer::operator()(gzFile_s* stream) const {
    gzclose_r(stream);
}

compressed_input::compressed_input(const std::string& name)
    : shown_(name == "-" ? "standard input" : printable(name)), piece_(kPieceSize) {
    errno = 0;
    const int descriptor = name == "-" ? dup(STDIN_FILENO) : -1;
    stream_.reset(name == "-" ? gzdopen(descriptor, "rb") : gzopen(name.c_str(), "rbe"));
    if (!stream_) {
        const int error = errno;
        if (descriptor != -1)
            close(descriptor);
        end_with_error("cannot open %s: %s", shown_.c_str(), reason_of(error != 0 ? error : ENOMEM).c_str());
    }
    gzbuffer(stream_.get(), kPieceSize);
}

/// zlib puts a name of its own in front.
static std::string without_name(std::string_view message) {
    const std::size_t colon = message.rfind(": ");
    return std::string(colon == std::string_view::npos ? message : message.substr(colon + 2));
}

/// What is not compressed comes as it stands.
std::string_view compressed_input::read() {
    errno = 0;
    const int size = gzread(stream_.get(), piece_.data(), kPieceSize);
    int error = Z_OK;
    const char* const message = gzerror(stream_.get(), &error);
    if (size < 0 || (size == 0 && error != Z_OK && error != Z_STREAM_END))
        end_with_error("cannot read %s: %s", shown_.c_str(),
                       (error == Z_ERRNO ? reason_of(errno)
                                         : with_remedy(without_name(message), "make it again with gcov"))
                           .c_str());
    return {piece_.data(), static_cast<std::size_t>(size)};
}
