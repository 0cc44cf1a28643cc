// A line on standard error that says how far a long piece of work has come. It appears on a terminal only,
// when the work takes longer than half a second, and is wiped when the work is done.
#pragma once

#include <chrono>
#include <cstddef>
#include <string>

class progress_line {
  public:
    /// `what` stands in front of the numbers, such as "objects read". `total`: number of steps.
    progress_line(std::string what, std::size_t total);

    /// Wipes the line.
    ~progress_line();
    progress_line(const progress_line&) = delete;
    progress_line& operator=(const progress_line&) = delete;

    /// One step is done.
    void step();

    /// Takes the line that is shown, if any, off the terminal, for a message that comes between.
    static void wipe();

  private:
    using clock = std::chrono::steady_clock;

    std::string what_;
    std::size_t total_;
    std::size_t done_ = 0;
    bool wanted_;            ///< standard error is a terminal
    clock::time_point next_; ///< when the line is to be written again
};
