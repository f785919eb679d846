#pragma once

#include <array>
#include <string>
#include <string_view>

#include "agent/base/FileDescriptor.h"

namespace Agent {

/// The bytes of a log of virtual addresses, from a file, a pipe or, for "-", standard input. An
/// ordinary file can be followed while a VipLogWriter writes it: its end then counts as the end of
/// the log only once the writer's lock is free.
class VipLogFile {
  public:
    /// Throws BadInputError when the file cannot be opened. A named pipe is waited for.
    VipLogFile(std::string name, bool follow);

    const std::string& name() const { return name_; }

    /// Waits for the next bytes and returns them as soon as there are any; none at the end. They
    /// are valid until the next call. Throws FailureError where the system refuses to read.
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
