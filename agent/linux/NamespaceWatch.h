#pragma once

#include "agent/linux/FileDescriptor.h"
#include "agent/linux/MonotonicClock.h"
#include "agent/linux/NetworkNamespace.h"

#include <map>
#include <string>
#include <utility>
#include <vector>

struct inotify_event;

namespace Agent::Linux {

/// Notices which named network namespaces there are: the files in /run/netns that a namespace is
/// bound to. The folder may come and go. A file is there before its namespace is; until then it is
/// looked at again and again. A name that was given to another namespace vanishes and appears.
/// Names that are not UTF-8 are left out. One agent thread, no locks.
class NamespaceWatch {
  public:
    struct Change {
        std::string name;
        bool appeared = false;
    };

    /// The namespaces that are there already are the first changes. Throws SystemError if /run
    /// cannot be watched.
    explicit NamespaceWatch(MonotonicClock clock = steadySeconds);

    /// Watch this for being readable and call onReadable() then.
    int fd() const { return inotify_.get(); }
    /// When onReadable() is to be called though the descriptor is not readable, in seconds of the
    /// clock handed in; infinity if never.
    double retryAt() const;
    void onReadable();

    /// What has come and gone since the last call, in that order.
    std::vector<Change> takeChanges() { return std::exchange(changes_, {}); }

  private:
    /// A file that no namespace is bound to.
    struct Waiting {
        double lookAt;
        double pause;
    };

    void handle(const inotify_event& event);
    void attach();
    void scan();
    void look(const std::string& name);
    void vanish(const std::string& name);
    void lookAgain();

    MonotonicClock clock_;
    FileDescriptor inotify_;
    int folderWatch_ = -1;
    std::map<std::string, NetworkNamespace::Identity> known_;
    std::map<std::string, Waiting> waiting_;
    std::vector<Change> changes_;
};

} // namespace Agent::Linux
