#pragma once

#include <cstdint>
#include <functional>
#include <list>
#include <optional>
#include <string>
#include <string_view>

#include "agent/base/Watcher.h"
#include "agent/server/ChangeLog.h"
#include "agent/server/ListeningSocket.h"
#include "agent/server/Session.h"
#include "agent/server/SocketPlace.h"

namespace Agent {

/// Serves the clients of a running agent over its socket, at most `maxClients` at a time.
///
/// One agent thread, no locks.
class SocketServer {
  public:
    static constexpr std::size_t maxClients = 64;

    using Report = std::function<void(const std::string& message)>;

    /// Listens at once, and again at most a second after somebody has removed the socket's file.
    /// Says why it cannot. Throws FailureError when that is at once. What the view refers to must
    /// outlive the server.
    SocketServer(const SocketPlace& place, const AgentView& view, Report report);
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

    /// The agent stops: clients that watch are told, see Session::stop().
    void stop();

    /// The event loop has made a turn: what some clients wait for may have come.
    void turned();

  private:
    using Sessions = std::list<Session>;

    class Look : public Orb::Clock::NotifieeConst {
      public:
        explicit Look(SocketServer& owner) : owner_(owner) {}
        void onTimeMin() override { owner_.look(); }

      private:
        SocketServer& owner_;
    };

    void listen();
    void look();
    void accept();
    bool acceptOne();
    void drop(const Session& session);

    AgentView view_;
    ChangeLog changes_;
    SocketPlace place_;
    Report report_;
    std::optional<ListeningSocket> socket_; // none while it cannot be had
    std::string said_;                      // of why it cannot
    Sessions sessions_;
    std::uint64_t dropped_ = 0;
    std::uint64_t refused_ = 0;
    /// Given up for a moment to turn a client away when there are no descriptors left.
    FileDescriptor reserve_;
    std::optional<Watcher> watcher_;
    Look look_{*this};
};

} // namespace Agent
