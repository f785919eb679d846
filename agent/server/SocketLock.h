#pragma once

#include <string>

#include "agent/base/FileDescriptor.h"

namespace Agent {

/// The right to the path of a socket, held for as long as the object lives: of all agents that are
/// given the path only one has it, so that no two replace a dead one's file at the same time, one
/// of them with the other's new socket.
///
/// It is a lock on a file of its own, PATH.lock, that nobody else may even open: a lock on a
/// folder, or on any file that others can read, could be held by whoever likes. The file goes with
/// the object.
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
