#include "common/progress_line.h"

#include <cstdio>
#include <unistd.h>
#include <utility>

constexpr std::chrono::milliseconds kFirstSight{500};
constexpr std::chrono::milliseconds kInterval{100};

static bool shown = false; ///< the terminal shows a line

progress_line::progress_line(std::string what, std::size_t total)
    : what_(std::move(what)), total_(total), wanted_(isatty(STDERR_FILENO) == 1),
      next_(clock::now() + kFirstSight) {}

progress_line::~progress_line() {
    wipe();
}

void progress_line::wipe() {
    if (shown)
        std::fputs("\r\033[K", stderr);
    shown = false;
}

void progress_line::step() {
    ++done_;
    if (!wanted_)
        return;
    const clock::time_point now = clock::now();
    if (now < next_)
        return;
    next_ = now + kInterval;
    shown = true;
    std::fprintf(stderr, "\r%s: %zu of %zu\033[K", what_.c_str(), done_, total_);
    std::fflush(stderr);
}
