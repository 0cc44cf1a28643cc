// What the readers of clang's files throw when a file cannot be what it claims to be.
#pragma once

#include <stdexcept>

/// The text says what is wrong; whoever knows the file puts its name in front.
class input_error : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// A file that holds nothing for a coverage report, that may not be read, or that is gone since it was found:
/// passed over where many are searched.
class not_of_interest : public input_error {
  public:
    using input_error::input_error;
};

/// The system failed to give a file's bytes: never passed over, or a run could lose a program and go on.
class file_failure : public input_error {
  public:
    using input_error::input_error;
};
