#pragma once

#include <stdexcept>

namespace Agent {

/// What a command ends with: its exit status.
enum class ExitStatus : int { fine = 0, failure = 1, badInput = 2 };

/// The command was used or fed wrongly. `what()` is one line for the user.
class BadInputError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// The command failed at its work. `what()` is one line for the user.
class FailureError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// Whoever read the output has gone: the command ends as a failure, and has nobody to say it to.
class ReaderGoneError : public std::runtime_error {
  public:
    ReaderGoneError() : std::runtime_error("nobody reads the output any more") {}
};

} // namespace Agent
