// What the readers of clang's files throw when a file cannot be what it claims to be.
#pragma once

#include <stdexcept>

/// The text says what is wrong; whoever knows the file puts its name in front.
class input_error : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// A file that is well formed but holds nothing for a coverage report: passed over where many are searched.
class not_instrumented : public input_error {
  public:
    using input_error::input_error;
};
