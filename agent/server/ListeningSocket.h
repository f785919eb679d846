#pragma once

#include <optional>
#include <string>

#include "agent/base/FileDescriptor.h"
#include "agent/server/SocketFile.h"
#include "agent/server/SocketLock.h"
#include "agent/server/SocketPlace.h"

namespace Agent {

/// A Unix stream socket that clients connect to by a path, and that only those may open
/// whom its place permits to. A socket file on which nobody listens any more, as that of an agent
/// that has died, is replaced; any other file stays, and the constructor fails. The destructor
/// removes the file.
class ListeningSocket {
  public:
    /// Throws FailureError.
    explicit ListeningSocket(SocketPlace place);
    ListeningSocket(const ListeningSocket&) = delete;
    ListeningSocket& operator=(const ListeningSocket&) = delete;
    ~ListeningSocket();

    int fd() const { return file_.get(); }

    /// Whether the file that clients find is still its own.
    bool isThere() const { return fileNamed(place_.path) == identity_; }

  private:
    void listen();
    void removeStale() const;

    SocketPlace place_;
    SocketLock lock_;
    FileDescriptor file_;
    std::optional<FileIdentity> identity_; // of the socket's file
};

} // namespace Agent
