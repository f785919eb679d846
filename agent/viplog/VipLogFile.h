#pragma once

#include <array>
#include <string>
#include <string_view>

#include "agent/base/FileDescriptor.h"

namespace Agent {

/// The bytes of a log of virtual addresses, from a file, a pipe or, for "-", standard input. An
/// ordinary file can be followed while a VipLogWriter writes it: its end is the end then only once
/// nobody holds the writer's lock any more.
class VipLogFile {
  public:
    /// Throws BadInputError when the file cannot be opened. A named pipe is waited for.
    VipLogFile(std::string name, bool follow);

    const std::string& name() const { return name_; }

    /// The next bytes, as fresh as they are there; valid until the next call. Waits for them. None
    /// at the end. Throws FailureError where the system refuses to read.
    std::string_view read();

  private:
    bool isBeingWritten() const;
    void waitForMore() const;

    std::string name_;
    FileDescriptor file_;
    FileDescriptor changes_; // none unless an ordinary file is followed
    std::array<char, 65536> piece_;
};

} // namespace Agent
