#include "run/signal_watch.h"

#include "common/message.h"
#include "common/platform.h"
#include "common/remedy.h"

#include <cerrno>

constexpr int kRequests[] = {SIGINT, SIGTERM, SIGHUP, SIGQUIT};
constexpr int kIgnored[] = {SIGPIPE, SIGXFSZ}; ///< by secure_process
constexpr std::chrono::milliseconds kRepetition(100);

static sigset_t blocked_before;        ///< by the caller of the program
static bool ignored_before[NSIG] = {}; ///< by the caller of the program

void note_signals() {
    sigprocmask(SIG_BLOCK, nullptr, &blocked_before);
    const auto note = [](int number) {
        struct sigaction action = {};
        sigaction(number, nullptr, &action);
        ignored_before[number] = action.sa_handler == SIG_IGN;
    };
    for (const int number : kRequests)
        note(number);
    for (const int number : kIgnored)
        note(number);
}

void signal_watch::restore() {
    forget_signals();
    for (const int number : kIgnored)
        std::signal(number, ignored_before[number] ? SIG_IGN : SIG_DFL);
    sigprocmask(SIG_SETMASK, &blocked_before, nullptr);
}

signal_watch::signal_watch() {
    sigset_t watched;
    sigemptyset(&watched);
    for (const int number : kRequests) {
        if (!ignored_before[number])
            sigaddset(&watched, number);
    }
    std::signal(SIGCHLD, SIG_DFL); // the status of a child is lost where it is ignored
    sigaddset(&watched, SIGCHLD);
    if (!keep_signals(watched))
        end_with_error("cannot watch for signals: %s", reason_of(errno).c_str()); // infeasible
}

signal_watch::~signal_watch() {
    forget_signals();
}

bool signal_watch::is_repeated(const end_request& request) {
    const auto now = std::chrono::steady_clock::now();
    const bool repeated =
        !request.of_terminal && request.number == last_number_ && now - last_time_ < kRepetition;
    last_number_ = request.number;
    last_time_ = now;
    return repeated;
}

/// The next request that has arrived.
std::optional<end_request> signal_watch::take() {
    arrived_signal arrived;
    while (next_signal(&arrived)) {
        const end_request request = {arrived.number, !arrived.of_process};
        if (request.number != SIGCHLD && !is_repeated(request))
            return request;
    }
    return std::nullopt;
}

std::optional<end_request> signal_watch::wait(int descriptor, int milliseconds) {
    wait_for_signal(descriptor, milliseconds);
    return take();
}
