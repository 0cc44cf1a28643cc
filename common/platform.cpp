// pipe2, where it is declared only with this.
#ifndef _GNU_SOURCE
#define _GNU_SOURCE
#endif

#include "common/platform.h"

#include "common/file_ptr.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <system_error>
#include <unistd.h>

#if defined(__linux__) && !defined(VEXCOV_PORTABLE)
#define VEXCOV_LINUX
#include <poll.h>
#include <sched.h>
#include <sys/prctl.h>
#include <sys/signalfd.h>
#else
#include <sys/select.h>
#endif

#if defined(__GLIBC__) && !defined(VEXCOV_PORTABLE)

static std::FILE* real_errors = nullptr; ///< standard error while it is watched
static void (*watcher)(void*, const char*, std::size_t) noexcept = nullptr;

/// The end of the run finds what could not be written.
static ssize_t pass_on(void* context, const char* bytes, std::size_t size) {
    std::fwrite(bytes, 1, size, real_errors);
    watcher(context, bytes, size);
    return static_cast<ssize_t>(size);
}

bool watch_standard_error(void (*take)(void*, const char*, std::size_t) noexcept, void* context) {
    if (real_errors) {
        std::fclose(stderr);
        stderr = real_errors;
        real_errors = nullptr;
    }
    watcher = take;
    if (!take)
        return true;
    cookie_io_functions_t functions = {};
    functions.write = pass_on;
    std::FILE* const watched = fopencookie(context, "w", functions);
    if (!watched)
        return false;
    // Nothing waits in it: messages keep their order, and survive whatever ends the run.
    std::setvbuf(watched, nullptr, _IONBF, 0);
    real_errors = stderr;
    stderr = watched;
    return true;
}

#else

bool watch_standard_error(void (*)(void*, const char*, std::size_t) noexcept, void*) {
    return true;
}

#endif

int wait_for_record_lock(int descriptor, struct flock* lock) {
    int result = -1;
#ifdef F_OFD_SETLKW
    do
        result = fcntl(descriptor, F_OFD_SETLKW, lock);
    while (result == -1 && errno == EINTR);
    if (result == 0 || errno != EINVAL)
        return result;
#endif
    do
        result = fcntl(descriptor, F_SETLKW, lock);
    while (result == -1 && errno == EINTR);
    return result;
}

std::int64_t modification_time(const struct stat& status) {
#ifdef __APPLE__
    const struct timespec& changed = status.st_mtimespec;
#else
    const struct timespec& changed = status.st_mtim;
#endif
    // Some file systems have dates that nanoseconds cannot count.
    const std::int64_t limit = 9'000'000'000;
    return std::clamp<std::int64_t>(changed.tv_sec, -limit, limit) * 1'000'000'000 + changed.tv_nsec;
}

#ifdef VEXCOV_LINUX

int open_pipe(int ends[2]) {
    return pipe2(ends, O_CLOEXEC);
}

void enlarge_pipe(int end, int size) {
    fcntl(end, F_SETPIPE_SZ, size);
}

unsigned usable_processors() {
    cpu_set_t usable;
    if (sched_getaffinity(0, sizeof usable, &usable) != 0)
        return 1;
    return static_cast<unsigned>(CPU_COUNT(&usable));
}

void adopt_orphans() {
    prctl(PR_SET_CHILD_SUBREAPER, 1);
}

namespace fs = std::filesystem;

/// Reads "number (name) state parent group session ..."; the name may hold anything.
static bool is_own_child(const fs::path& process) {
    const file_ptr stream(std::fopen((process / "stat").c_str(), "r"));
    char text[512];
    if (!stream)
        return false;
    text[std::fread(text, 1, sizeof text - 1, stream.get())] = '\0';
    const char* const behind_name = std::strrchr(text, ')');
    int parent = 0;
    int session = 0;
    return behind_name && std::sscanf(behind_name, ") %*c %d %*d %d", &parent, &session) == 2 &&
           parent == getpid() && session == getsid(0);
}

std::vector<pid_t> own_children() {
    std::vector<pid_t> children;
    std::error_code error;
    for (fs::directory_iterator entry("/proc", error), end; !error && entry != end; entry.increment(error)) {
        const int number = std::atoi(entry->path().filename().c_str());
        if (number > 0 && is_own_child(entry->path()))
            children.push_back(number);
    }
    return children;
}

static int kept_signals = -1; ///< can be read where there are some; -1: none are kept

bool keep_signals(const sigset_t& signals) {
    sigprocmask(SIG_BLOCK, &signals, nullptr);
    kept_signals = signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK);
    return kept_signals != -1;
}

void wait_for_signal(int descriptor, int milliseconds) {
    pollfd watched[] = {{kept_signals, POLLIN, 0}, {descriptor, POLLIN, 0}};
    poll(watched, 2, milliseconds);
}

bool next_signal(arrived_signal* signal) {
    signalfd_siginfo info;
    if (read(kept_signals, &info, sizeof info) != static_cast<ssize_t>(sizeof info))
        return false;
    // What a process sends has a code of 0 or less.
    *signal = {static_cast<int>(info.ssi_signo), info.ssi_code <= 0};
    return true;
}

void forget_signals() {
    if (kept_signals != -1)
        close(kept_signals);
    kept_signals = -1;
}

#else

int open_pipe(int ends[2]) {
    if (pipe(ends) != 0)
        return -1;
    fcntl(ends[0], F_SETFD, FD_CLOEXEC);
    fcntl(ends[1], F_SETFD, FD_CLOEXEC);
    return 0;
}

void enlarge_pipe(int, int) {}

unsigned usable_processors() {
    const long number = sysconf(_SC_NPROCESSORS_ONLN);
    return number > 0 ? static_cast<unsigned>(number) : 1;
}

void adopt_orphans() {}

std::vector<pid_t> own_children() {
    return {};
}

static sigset_t kept_signals;
static volatile std::sig_atomic_t arrived[NSIG];    ///< by their numbers
static volatile std::sig_atomic_t of_process[NSIG]; ///< the same for those that have arrived

static void note_arrival(int number, siginfo_t* info, void*) {
    of_process[number] = info->si_code == SI_USER || info->si_code == SI_QUEUE;
    arrived[number] = 1;
}

/// The signals of the set as the handler gets them, or as they are by default.
static void handle_kept(bool by_handler) {
    struct sigaction action = {};
    action.sa_flags = by_handler ? SA_SIGINFO | SA_RESTART : 0;
    if (by_handler)
        action.sa_sigaction = note_arrival;
    else
        action.sa_handler = SIG_DFL;
    for (int number = 1; number < NSIG; ++number) {
        if (sigismember(&kept_signals, number) == 1)
            sigaction(number, &action, nullptr);
    }
}

bool keep_signals(const sigset_t& signals) {
    kept_signals = signals;
    sigprocmask(SIG_BLOCK, &signals, nullptr);
    handle_kept(true);
    return true;
}

/// The signals are let through while it waits and at no other time, so that none arrives between a look and
/// the wait.
void wait_for_signal(int descriptor, int milliseconds) {
    sigset_t waiting;
    sigprocmask(SIG_BLOCK, nullptr, &waiting);
    for (int number = 1; number < NSIG; ++number) {
        if (sigismember(&kept_signals, number) == 1)
            sigdelset(&waiting, number);
    }
    fd_set readable;
    FD_ZERO(&readable);
    if (descriptor != -1)
        FD_SET(descriptor, &readable);
    const struct timespec time = {milliseconds / 1000, milliseconds % 1000 * 1'000'000L};
    pselect(descriptor + 1, &readable, nullptr, nullptr, milliseconds == -1 ? nullptr : &time, &waiting);
}

bool next_signal(arrived_signal* signal) {
    for (int number = 1; number < NSIG; ++number) {
        if (!arrived[number])
            continue;
        arrived[number] = 0;
        *signal = {number, of_process[number] != 0};
        return true;
    }
    return false;
}

void forget_signals() {
    handle_kept(false);
    sigemptyset(&kept_signals);
}

#endif
