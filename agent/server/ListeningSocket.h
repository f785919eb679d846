#pragma once

#include <string>
#include <sys/types.h>

#include "agent/base/FileDescriptor.h"
#include "agent/server/SocketLock.h"

namespace Agent {

/// A Unix stream socket that clients connect to by a path, and that only its owner and group may
/// open. The file of an agent that has died is replaced, that of one that lives, or of another
/// program that listens, is not; the own file goes with the object.
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
    dev_t device_ = 0;
    ino_t inode_ = 0;
};

} // namespace Agent
