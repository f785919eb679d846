#pragma once

#include <cstdint>
#include <list>
#include <string>
#include <string_view>

#include "agent/base/Watcher.h"
#include "agent/server/ChangeLog.h"
#include "agent/server/ListeningSocket.h"
#include "agent/server/Session.h"

namespace Agent {

/// Serves the clients of a running agent over its socket, at most `maxClients` at a time.
///
/// One agent thread, no locks.
class SocketServer {
  public:
    static constexpr std::size_t maxClients = 64;

    /// Listens at once. Throws FailureError. What the view refers to must outlive the server.
    SocketServer(const std::string& path, const AgentView& view);
    SocketServer(const SocketServer&) = delete;
    SocketServer& operator=(const SocketServer&) = delete;
    ~SocketServer() = default;

    /// Clients since the start, and at present.
    struct Counts {
        std::uint64_t present = 0;
        std::uint64_t dropped = 0; ///< too slow or silent
        std::uint64_t refused = 0; ///< there was no place for them
    };
    Counts counts() const { return {sessions_.size(), dropped_, refused_}; }

    /// Whether a client watches.
    bool isWatched() const;
    /// Sends a change, a line of JSON with its line end, to all clients that watch.
    void changeIs(std::string_view line);

    /// The event loop has made a turn: what some clients wait for may have come.
    void turned();

  private:
    using Sessions = std::list<Session>;

    void accept();
    bool acceptOne();
    void drop(const Session& session);

    AgentView view_;
    ChangeLog changes_;
    ListeningSocket socket_;
    Sessions sessions_;
    std::uint64_t dropped_ = 0;
    std::uint64_t refused_ = 0;
    /// Given up for a moment to turn a client away when there are no descriptors left.
    FileDescriptor reserve_;
    Watcher watcher_;
};

} // namespace Agent
