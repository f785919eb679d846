#pragma once

#include "agent/base/FileDescriptor.h"
#include "agent/linux/NetworkNamespace.h"

#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace Agent::Linux {

/// Notices which of some named network namespaces there are: files in /run/netns that a namespace
/// is bound to, or links to one. The folder may come and go, and so may the namespace that a file
/// is bound to. A name that was given to another namespace vanishes and appears.
///
/// Looking opens nothing, so it keeps no mount busy and needs no free descriptor. A file that
/// cannot be looked at stays what it was, and counts as a namespace if it was nothing yet: who
/// opens it is told what is wrong.
///
/// One agent thread, no locks.
class NamespaceWatch {
  public:
    /// A namespace has come or gone.
    struct Event {
        std::string name;
        bool appeared = false;
    };

    /// The namespaces that are there already are the first events. Throws SystemError if files or
    /// mounts cannot be watched.
    explicit NamespaceWatch(std::set<std::string> names);

    /// Watch this for being readable and call onReadable() each time: that it was tells of a mount
    /// once only.
    int fd() const { return poll_.get(); }
    void onReadable();

    /// What has come and gone since the last call, in that order.
    std::vector<Event> takeEvents() { return std::exchange(events_, {}); }

  private:
    void watchFolder();
    void readEvents();
    void lookAtAll();
    void look(const std::string& name);
    void vanish(const std::string& name);

    std::set<std::string> names_;
    FileDescriptor inotify_;
    FileDescriptor mounts_;
    FileDescriptor poll_;
    int folderWatch_ = -1;
    std::map<std::string, NetworkNamespace::Identity> known_;
    std::vector<Event> events_;
};

} // namespace Agent::Linux
