#include "changes/diff_input.h"

#include "common/file_ptr.h"
#include "common/message.h"
#include "common/remedy.h"

#include <cerrno>
#include <cstdio>

static std::vector<changed_file> read_stream(std::FILE* stream, const std::string& shown, int strip) {
    constexpr std::size_t kPieceSize = std::size_t{1} << 16;
    std::vector<char> piece(kPieceSize);
    unified_diff_reader reader(strip);
    bool fine = true;
    for (std::size_t size = kPieceSize; fine && size != 0;) {
        errno = 0;
        size = std::fread(piece.data(), 1, kPieceSize, stream);
        if (std::ferror(stream))
            end_with_error("cannot read %s: %s", shown.c_str(), reason_of(errno).c_str());
        fine = size == 0 ? reader.finish() : reader.feed({piece.data(), size});
    }
    if (!fine)
        end_with_error("%s%s", shown.c_str(),
                       with_remedy(printable(reader.fault()), "make the diff again").c_str());
    return reader.take_files();
}

std::vector<changed_file> read_diff(const std::string& name, int strip) {
    if (name == "-")
        return read_stream(stdin, "the diff on standard input", strip);
    const file_ptr stream(std::fopen(name.c_str(), "rb"));
    if (!stream)
        end_with_error("cannot open %s: %s", printable(name).c_str(), reason_of(errno).c_str());
    return read_stream(stream.get(), printable(name), strip);
}
