#pragma once

#include <string_view>
#include <sys/types.h>

#include "agent/base/FileDescriptor.h"

namespace Agent {

/// Standard output or standard error, written without ever waiting for whoever reads it: a pipe
/// that nobody drains, a terminal that is stopped.
class OutputFile {
  public:
    /// The descriptor stays open for as long as the object lives, and stays as it is.
    explicit OutputFile(int descriptor);

    /// What to wait on until more is taken.
    int fd() const { return own_ ? own_.get() : descriptor_; }

    /// Whether something is taken within that time, or an error waits to be seen.
    bool isWritable(int milliseconds) const;

    /// Writes as much as is taken at once. Returns how many bytes, 0 for none; -1 with errno set
    /// when the file has failed.
    ssize_t write(std::string_view bytes) const;

  private:
    ssize_t tryWrite(std::string_view bytes) const;

    int descriptor_;
    bool isSocket_;
    FileDescriptor own_;
};

/// Writes a line to standard error, for when no event loop runs. What is not taken within half a
/// second is lost.
void writeErrorLine(std::string_view line);

} // namespace Agent
