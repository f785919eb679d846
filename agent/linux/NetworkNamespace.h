#pragma once

#include "agent/base/FileDescriptor.h"

#include <compare>
#include <functional>
#include <optional>
#include <string>
#include <sys/types.h>

namespace Agent::Linux {

/// The calling thread's network namespace, or a handle on a named one, which it keeps alive. Its
/// name can be unmounted and removed all the same.
class NetworkNamespace {
  public:
    /// Tells namespaces that exist at the same time apart. The kernel uses an identity anew once a
    /// namespace has ended.
    struct Identity {
        dev_t device = 0;
        ino_t inode = 0;
        auto operator<=>(const Identity&) const = default;
    };

    /// The calling thread's namespace.
    NetworkNamespace() = default;
    /// The namespace of that name: one that is bound to a file of that name in /run/netns or
    /// /var/run/netns. Throws Orb::ParseError if `name` cannot be a file's, SystemError if there is
    /// no such namespace or it cannot be entered.
    explicit NetworkNamespace(const std::string& name);

    /// Runs `action` inside the namespace; if that is a named one then on a thread of its own, so
    /// that the calling thread never changes its namespace. Waits for it; whatever it throws is
    /// thrown on. Throws SystemError if the namespace cannot be entered.
    void run(const std::function<void()>& action) const;

    /// The namespace bound to the file `path`; none if there is no file or an ordinary one, the
    /// default Identity, which no namespace has, if that cannot be told. Opens nothing.
    static std::optional<Identity> identify(const std::string& path);

  private:
    std::string name_;
    /// None for the calling thread's.
    FileDescriptor file_;
};

} // namespace Agent::Linux
