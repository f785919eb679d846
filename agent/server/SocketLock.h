#pragma once

#include <string>

#include "agent/base/FileDescriptor.h"

namespace Agent {

/// Exclusive use of the path of a socket, for as long as the object lives. Without it two agents
/// that start at the same time on the file of a dead one could both replace it, the second one
/// removing the new socket of the first.
///
/// It is a lock on a file beside the socket, PATH.lock, that only its owner may open. A file or
/// folder that others can open would not do: whoever can open one can hold the lock. The destructor
/// removes the file.
class SocketLock {
  public:
    /// Never waits. Throws FailureError when another agent holds the lock, or when the file cannot
    /// be made or belongs to somebody else.
    explicit SocketLock(const std::string& path);
    SocketLock(const SocketLock&) = delete;
    SocketLock& operator=(const SocketLock&) = delete;
    ~SocketLock();

  private:
    bool take(const std::string& path);

    std::string name_;
    FileDescriptor file_;
};

} // namespace Agent
