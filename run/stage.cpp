#include "run/stage.h"

#include "common/fatal.h"
#include "common/message.h"
#include "common/platform.h"
#include "common/remedy.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

/// A stage that runs; ended, with what it started, at the end of the object's life.
class stage_process {
  public:
    stage_process() = default;
    stage_process(const stage_process&) = delete;
    stage_process& operator=(const stage_process&) = delete;
    ~stage_process();

    /// Starts it. What it writes goes to standard error or, when `held_back`, to output(). Returns 0, or what
    /// errno holds where it cannot be started.
    int start(const std::function<void()>& body, bool held_back);

    /// Can be read, without waiting, until the stage ends.
    int output() const { return output_; }

    /// Waits for its end and returns its status as waitpid gives it.
    int finish();

  private:
    pid_t process_ = -1;
    int output_ = -1;
};

} // namespace

/// `errors` becomes standard error.
[[noreturn]] static void run_in_child(const std::function<void()>& body, int errors) {
    // A group of its own can be ended with what it starts, and is left alone by the keys of the terminal.
    setpgid(0, 0);
    signal_watch::restore();
    secure_process();
    std::signal(SIGTTOU, SIG_IGN); // a terminal may stop writers in the background
    dup2(errors, STDERR_FILENO);
    dup2(STDERR_FILENO, STDOUT_FILENO);
    std::exit(run_program(body));
}

int stage_process::start(const std::function<void()>& body, bool held_back) {
    std::fflush(stdout);
    std::fflush(stderr);
    int ends[2];
    if (open_pipe(ends) != 0)
        return errno; // infeasible
    output_ = ends[0];
    fcntl(output_, F_SETFL, O_NONBLOCK);
    process_ = fork();
    if (process_ == 0)
        run_in_child(body, held_back ? ends[1] : STDERR_FILENO);
    const int error = process_ == -1 ? errno : 0;
    close(ends[1]);
    if (process_ != -1)
        setpgid(process_, process_); // whoever comes first
    return error;
}

int stage_process::finish() {
    int status = 0;
    while (waitpid(process_, &status, 0) == -1 && errno == EINTR) {
    }
    process_ = -1;
    return status;
}

stage_process::~stage_process() {
    if (output_ != -1)
        close(output_);
    if (process_ == -1)
        return;
    const pid_t group = -process_;
    kill(group, SIGKILL);
    finish();
    while (waitpid(group, nullptr, 0) > 0) {
        // What the stage started has become a child of this process.
    }
}

/// What the stage writes until it ends.
static std::string read_output(int descriptor, signal_watch* signals) {
    std::string output;
    char piece[4096];
    for (;;) {
        if (const auto request = signals->wait(descriptor, -1))
            pgt_Exit(128 + request->number);
        const ssize_t size = read(descriptor, piece, sizeof piece);
        if (size > 0)
            output.append(piece, static_cast<std::size_t>(size));
        else if (size == 0 || (errno != EAGAIN && errno != EINTR))
            return output;
    }
}

int run_stage(const char* name, const std::string& banner, const std::function<void()>& body,
              signal_watch* signals) {
    stage_process stage;
    if (const int error = stage.start(body, !banner.empty())) {
        print_error("cannot start %s: %s", name, reason_of(error).c_str());
        return 1;
    }
    std::string output = read_output(stage.output(), signals);
    if (const std::size_t place = output.find(banner); place != std::string::npos)
        output.erase(place, banner.size());
    std::fwrite(output.data(), 1, output.size(), stderr);
    const int status = stage.finish();
    if (!WIFSIGNALED(status))
        return WEXITSTATUS(status);
    print_error("%s was ended by signal %d (%s)", name, WTERMSIG(status), strsignal(WTERMSIG(status)));
    return 1;
}
