#include "common/output_file.h"

#include "common/fatal.h"
#include "common/message.h"

#include <memory>
#include <string>
#include <vector>

namespace {

/// Room for most pages. What text_buffer hands over is several times as large: the stream copies only as much
/// of it as fills this buffer, and the rest goes to the file directly.
constexpr std::size_t kBufferSize = std::size_t{1} << 15;

/// A stream that is open, with what goes away when it is closed.
struct open_file {
    std::FILE* stream;
    std::string path;
    std::unique_ptr<char[]> buffer;
};

} // namespace

static std::vector<open_file> open_files;                  ///< a handful at most
static std::vector<std::unique_ptr<char[]>> spare_buffers; ///< of closed streams, for the next ones

static std::unique_ptr<char[]> take_buffer() {
    if (spare_buffers.empty())
        return std::make_unique<char[]>(kBufferSize);
    std::unique_ptr<char[]> buffer = std::move(spare_buffers.back());
    spare_buffers.pop_back();
    return buffer;
}

std::FILE* open_output(const char* path, const char* mode) {
    open_file file = {nullptr, path, take_buffer()};
    open_files.reserve(open_files.size() + 1);
    file.stream = std::fopen(path, mode);
    if (!file.stream) {
        spare_buffers.push_back(std::move(file.buffer));
        return nullptr;
    }
    std::setvbuf(file.stream, file.buffer.get(), _IOFBF, kBufferSize);
    std::FILE* stream = file.stream;
    open_files.push_back(std::move(file));
    return stream;
}

/// Closes the file and says so when something written to it was lost.
static bool close_file(const open_file& file) {
    const bool written = std::ferror(file.stream) == 0;
    const bool closed = std::fclose(file.stream) == 0;
    if (written && closed)
        return true;
    print_error("cannot write %s", file.path.c_str());
    return false;
}

void close_output(std::FILE* stream) {
    for (std::size_t i = open_files.size(); i-- > 0;) {
        if (open_files[i].stream != stream)
            continue;
        open_file file = std::move(open_files[i]);
        open_files.erase(open_files.begin() + static_cast<std::ptrdiff_t>(i));
        const bool complete = close_file(file);
        spare_buffers.push_back(std::move(file.buffer));
        if (!complete)
            pgt_Exit(1);
        return;
    }
}

bool close_open_outputs() {
    bool complete = true;
    for (const open_file& file : open_files)
        complete = close_file(file) && complete;
    open_files.clear();
    return complete;
}
