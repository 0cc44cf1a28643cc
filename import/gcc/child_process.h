// A program that runs beside the importer and whose standard output is read.
#pragma once

#include <string>
#include <string_view>
#include <sys/types.h>
#include <vector>

/// How a program ended.
struct child_end {
    int signal = 0; ///< that ended it; 0: none did
    int status = 0; ///< exit status, when there was no signal
};

/// One running program. Its standard input is empty, what it writes to standard error is thrown away, its
/// messages are in English, and its memory comes in large pieces.
class child_process {
  public:
    child_process() = default;
    child_process(const child_process&) = delete;
    child_process& operator=(const child_process&) = delete;
    /// A program that is still running is ended.
    ~child_process();

    /// Starts `program`, which is looked for in PATH unless it holds a slash. Returns 0 or an error number.
    int start(const std::string& program, const std::vector<std::string>& arguments);

    /// The descriptor of its output, for poll(); -1 when nothing runs.
    int output() const { return output_; }

    /// Waits for output. Returns a piece of it, valid until the next call; empty at its end.
    std::string_view read();

    /// Waits for the end of the program, whose output need not be at its end.
    child_end finish();

    /// Ends the program at once.
    void stop();

  private:
    pid_t process_ = -1;
    int output_ = -1;
    std::vector<char> piece_;
};
