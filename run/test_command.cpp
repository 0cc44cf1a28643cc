#include "run/test_command.h"

#include "common/fatal.h"
#include "common/message.h"
#include "common/platform.h"

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>
#include <vector>

constexpr std::chrono::milliseconds kGrace(1000); ///< for what the command has left running

// infeasible: begin
// Nothing of a process that becomes another program is counted.

/// Becomes the shell that runs the command, a script without a first line.
static void execute_by_shell(char** command) {
    std::vector<const char*> line = {"sh", "-c", "exec \"$0\" \"$@\""};
    for (; *command; ++command)
        line.push_back(*command);
    line.push_back(nullptr);
    execv("/bin/sh", const_cast<char**>(line.data()));
}

/// Becomes the command. Where that fails, what errno holds goes into the pipe.
[[noreturn]] static void execute(char** command, const std::vector<environment_change>& changes, int report) {
    signal_watch::restore();
    for (const environment_change& change : changes) {
        if (change.value.empty())
            unsetenv(change.name);
        else
            setenv(change.name, change.value.c_str(), 1);
    }
    execvp(command[0], command);
    if (errno == ENOEXEC) // not every C library does so itself
        execute_by_shell(command);
    const int error = errno;
    if (write(report, &error, sizeof error) == -1)
        std::_Exit(126);
    std::_Exit(127);
}
// infeasible: end

int test_command::start(char** command, const std::vector<environment_change>& changes) {
    int ends[2];
    if (open_pipe(ends) != 0)
        return errno; // infeasible
    // What outlives its parent becomes a child of this process, which so knows whether anything still runs.
    adopt_orphans();
    process_ = fork();
    if (process_ == 0)
        execute(command, changes, ends[1]); // infeasible
    int error = errno;
    close(ends[1]);
    if (process_ != -1) {
        const ssize_t size = read(ends[0], &error, sizeof error); // nothing comes when it runs
        if (size != static_cast<ssize_t>(sizeof error))
            error = 0;
        else
            waitpid(std::exchange(process_, -1), &status_, 0);
    }
    close(ends[0]);
    return error;
}

/// Takes note of the children that have ended. False when there are no more.
bool test_command::reap() {
    int status = 0;
    for (;;) {
        const pid_t ended = waitpid(-1, &status, WNOHANG);
        if (ended <= 0)
            return ended == 0;
        if (ended != process_)
            continue;
        process_ = -1;
        status_ = status;
    }
}

/// Ends the command and all that it started in this session: those that have become children of this process
/// and, round by round, those that become it then.
static void end_processes(pid_t command) {
    if (command != -1) {
        kill(command, SIGKILL);
        waitpid(command, nullptr, 0);
    }
    for (std::vector<pid_t> others = own_children(); !others.empty(); others = own_children()) {
        for (const pid_t other : others) {
            kill(other, SIGKILL);
            waitpid(other, nullptr, 0);
        }
    }
}

void test_command::end_run(const end_request& request) {
    end_processes(std::exchange(process_, -1));
    pgt_Exit(128 + request.number);
}

int test_command::wait(signal_watch* signals) {
    int passed_on = 0;
    bool asked = false;
    while (reap() && process_ != -1) {
        const std::optional<end_request> request = signals->wait(-1, -1);
        if (!request)
            continue;
        if (std::exchange(asked, true))
            end_run(*request);
        if (!request->of_terminal)
            kill(process_, passed_on = request->number);
    }
    wait_for_others(passed_on, signals);
    return status_;
}

void test_command::wait_for_others(int passed_on, signal_watch* signals) {
    const auto end = std::chrono::steady_clock::now() + kGrace;
    bool any = reap();
    if (any && passed_on != 0) {
        for (const pid_t other : own_children())
            kill(other, passed_on);
    }
    for (; any; any = reap()) {
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(end - std::chrono::steady_clock::now());
        if (left.count() <= 0) {
            print_warning(
                "processes that the command started still run; what they count is not in the report "
                "(let it wait for them)");
            return;
        }
        if (const auto request = signals->wait(-1, static_cast<int>(left.count()) + 1))
            end_run(*request);
    }
}

test_command::~test_command() {
    if (process_ != -1)
        end_processes(process_);
}
