#include "exchange/spool.h"

#include "common/message.h"
#include "common/remedy.h"

#include <algorithm>
#include <cerrno>
#include <string_view>
#include <unistd.h>

[[noreturn]] static void fail(const char* what) {
    end_with_error("cannot %s a temporary file in %s: %s", what, P_tmpdir, reason_of(errno).c_str());
}

spool::spool() : stream_(std::tmpfile()) {
    if (!stream_)
        fail("create");
}

spool::~spool() {
    std::fclose(stream_);
}

std::uint64_t spool::size() {
    const off_t place = ftello(stream_);
    if (place < 0 || std::ferror(stream_))
        fail("write");
    return static_cast<std::uint64_t>(place);
}

void spool::copy(std::uint64_t offset, std::uint64_t count, text_buffer& out) {
    if (std::fflush(stream_) != 0 || std::ferror(stream_))
        fail("write");
    char piece[std::size_t{1} << 16];
    while (count > 0) {
        const std::size_t wanted = static_cast<std::size_t>(std::min<std::uint64_t>(count, sizeof piece));
        const ssize_t got = pread(fileno(stream_), piece, wanted, static_cast<off_t>(offset));
        if (got <= 0)
            fail("read");
        out.put(std::string_view(piece, static_cast<std::size_t>(got)));
        offset += static_cast<std::uint64_t>(got);
        count -= static_cast<std::uint64_t>(got);
    }
}
