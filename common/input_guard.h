// The files that a run reads, whatever they are called: none of them may be written over.
#pragma once

#include <set>
#include <string>
#include <sys/types.h>
#include <utility>

class input_guard {
  public:
    /// Takes an input; one that is not there cannot be written over.
    void add(const std::string& path);

    /// Ends the run with a message and exit status 1 when `target` is one of them.
    void check(const std::string& target) const;

  private:
    std::set<std::pair<dev_t, ino_t>> inputs_; ///< disk and number on it
};
