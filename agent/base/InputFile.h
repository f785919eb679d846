#pragma once

#include <fstream>
#include <streambuf>
#include <string>

namespace Agent {

/// A file to read, or standard input for "-".
class InputFile {
  public:
    /// Throws BadInputError when the file cannot be opened.
    explicit InputFile(std::string name);

    const std::string& name() const { return name_; }

    /// Reading it throws FailureError where the system refuses to read.
    std::streambuf& buffer();

  private:
    std::string name_;
    std::filebuf file_;
};

} // namespace Agent
