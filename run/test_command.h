// The command that runs the tests, as a child process with the standard streams of this one.
#pragma once

#include "run/signal_watch.h"

#include <string>
#include <sys/types.h>
#include <vector>

/// A variable of the command's environment; without a value, it is taken out.
struct environment_change {
    const char* name;
    std::string value;
};

class test_command {
  public:
    test_command() = default;
    test_command(const test_command&) = delete;
    test_command& operator=(const test_command&) = delete;
    /// Ends the command where it still runs, with all that it started in this session.
    ~test_command();

    /// Starts the command, which is looked for in PATH. Returns 0, or what errno holds where it cannot be
    /// run.
    int start(char** command, const std::vector<environment_change>& changes);

    /// Waits for the end of the command and returns its status as waitpid gives it. The first signal that
    /// asks the run to end is passed on to it; a second one ends the run, with 128 and its number. What the
    /// command has left running gets a second to end; then a warning says that it is not in the report.
    int wait(signal_watch* signals);

  private:
    bool reap();
    void wait_for_others(int passed_on, signal_watch* signals);
    [[noreturn]] void end_run(const end_request& request);

    pid_t process_ = -1; ///< -1: does not run
    int status_ = 0;     ///< of the command, once it has ended
};
