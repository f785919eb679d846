#pragma once

#include <optional>
#include <string>

#include "agent/base/FileDescriptor.h"
#include "agent/server/SocketFile.h"
#include "agent/server/SocketLock.h"

namespace Agent {

/// A Unix stream socket that clients connect to by a path, and that only its owner and group may
/// open. A socket file on which nobody listens any more, as that of an agent that has died, is
/// replaced; any other file stays, and the constructor fails. The destructor removes the file.
class ListeningSocket {
  public:
    /// Throws FailureError.
    explicit ListeningSocket(std::string path);
    ListeningSocket(const ListeningSocket&) = delete;
    ListeningSocket& operator=(const ListeningSocket&) = delete;
    ~ListeningSocket();

    int fd() const { return file_.get(); }

  private:
    void listen();
    void removeStale() const;

    std::string path_;
    SocketLock lock_;
    FileDescriptor file_;
    std::optional<FileIdentity> identity_; // of the socket's file
};

} // namespace Agent
