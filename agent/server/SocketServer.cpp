#include "agent/server/SocketServer.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <fcntl.h>
#include <sys/socket.h>
#include <utility>

#include "agent/base/Errors.h"
#include "agent/document/JsonWriter.h"

namespace Agent {

namespace {

/// Clients that one turn of the event loop lets in.
constexpr int acceptedAtOnce = 16;
/// Seconds between two looks at whether the socket's file is still there.
constexpr double lookPause = 1;
/// For how long the end of all watches may wait for the clients.
constexpr std::chrono::milliseconds stopPatience(500);

FileDescriptor openReserve() { return FileDescriptor(::open("/dev/null", O_RDONLY | O_CLOEXEC)); }

} // namespace

SocketServer::SocketServer(const SocketPlace& place, const AgentView& view, Report report)
    : view_(view), place_(place), report_(std::move(report)), reserve_(openReserve()) {
    listen();
    look_.notifierIs(Orb::Ptr<const Orb::Clock>(&view.clock));
    look_.timeMinIs(view_.clock.now() + lookPause);
}

void SocketServer::listen() {
    watcher_.reset();
    socket_.reset();
    socket_.emplace(place_);
    watcher_.emplace(socket_->fd(), Orb::Ptr<const Orb::Clock>(&view_.clock), [this] { accept(); });
}

void SocketServer::look() {
    look_.timeMinIs(view_.clock.now() + lookPause);
    if (socket_ && socket_->isThere()) {
        return;
    }
    try {
        listen();
        said_.clear();
    } catch (const FailureError& error) {
        if (said_ != error.what()) {
            said_ = error.what();
            report_(said_ + "; nobody can ask this agent until that is over");
        }
    }
}

void SocketServer::stop() {
    const auto deadline = std::chrono::steady_clock::now() + stopPatience;
    for (Session& session : sessions_) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
            deadline - std::chrono::steady_clock::now());
        session.stop(static_cast<int>(std::max<std::int64_t>(left.count(), 0)));
    }
}

bool SocketServer::isWatched() const {
    return std::any_of(sessions_.begin(), sessions_.end(),
                       [](const Session& session) { return session.isWatching(); });
}

void SocketServer::changeIs(std::string_view line) {
    changes_.append(line);
    ChangeLog::Position first = changes_.end();
    for (Session& session : sessions_) {
        if (session.isWatching()) {
            first = std::min(first, session.position());
            session.onChanges();
        }
    }
    changes_.dropBefore(first);
}

void SocketServer::turned() {
    for (Session& session : sessions_) {
        session.onTurn();
    }
}

void SocketServer::accept() {
    for (int i = 0; i < acceptedAtOnce && acceptOne(); ++i) {
    }
}

/// Returns whether more clients may be waiting.
bool SocketServer::acceptOne() {
    FileDescriptor file(::accept4(socket_->fd(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
    if (!file) {
        if (errno == EMFILE || errno == ENFILE) {
            // A client that stays in the queue would keep the loop spinning.
            reserve_ = FileDescriptor();
            ++refused_;
            FileDescriptor turnedAway(::accept(socket_->fd(), nullptr, nullptr));
            turnedAway = FileDescriptor();
            reserve_ = openReserve();
        }
        return false;
    }
    if (sessions_.size() >= maxClients) {
        ++refused_;
        std::string full;
        appendJsonLine(full, "error", "too many clients");
        ::send(file.get(), full.data(), full.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
        return true;
    }
    sessions_.emplace_back(std::move(file), view_, changes_,
                           [this](const Session& session) { drop(session); });
    return true;
}

void SocketServer::drop(const Session& session) {
    dropped_ += session.isDropped() ? 1 : 0;
    sessions_.remove_if([&](const Session& other) { return &other == &session; });
}

} // namespace Agent
