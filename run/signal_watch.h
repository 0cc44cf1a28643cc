// The signals that ask the run to end: they are taken at points where all can be cleaned up behind them.
//
// SIGINT, SIGTERM, SIGHUP and SIGQUIT are blocked and read instead, but for those that the caller ignores
// (nohup). A key of the terminal sends its signal to every process in the foreground, this one and the
// command's; any other signal is sent to this process only.
#pragma once

#include <chrono>
#include <csignal>
#include <optional>

/// Remembers how the caller of the program handles signals. main calls it before anything changes that.
void note_signals();

/// A signal that asks the run to end.
struct end_request {
    int number;
    bool of_terminal; ///< the processes of the command have got it, too
};

class signal_watch {
  public:
    /// Blocks the signals, for the rest of the process's life. Ends the run with a message when it cannot.
    signal_watch();
    signal_watch(const signal_watch&) = delete;
    signal_watch& operator=(const signal_watch&) = delete;
    ~signal_watch();

    /// Waits until a signal arrives, a child ends, `descriptor` (-1 for none) can be read, or `milliseconds`
    /// (-1 for any number) have passed. Returns the signal, if it was one. Programs such as timeout send one
    /// signal to this process and again to its group: the second within a tenth of a second is passed over.
    std::optional<end_request> wait(int descriptor, int milliseconds);

    /// Gives a child process the signals as the caller of the program has them.
    static void restore();

  private:
    std::optional<end_request> take();
    bool is_repeated(const end_request& request);

    int last_number_ = 0;
    std::chrono::steady_clock::time_point last_time_;
};
