#include "agent/server/SocketServer.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/socket.h>
#include <utility>

#include "agent/document/JsonWriter.h"

namespace Agent {

namespace {

/// Clients that one turn of the event loop lets in.
constexpr int acceptedAtOnce = 16;

FileDescriptor openReserve() { return FileDescriptor(::open("/dev/null", O_RDONLY | O_CLOEXEC)); }

} // namespace

SocketServer::SocketServer(const std::string& path, const AgentView& view)
    : view_(view), socket_(path), reserve_(openReserve()),
      watcher_(socket_.fd(), Orb::Ptr<const Orb::Clock>(&view.clock), [this] { accept(); }) {}

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
    FileDescriptor file(::accept4(socket_.fd(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
    if (!file) {
        if (errno == EMFILE || errno == ENFILE) {
            // A client that stays in the queue would keep the loop spinning.
            reserve_ = FileDescriptor();
            ++refused_;
            FileDescriptor turnedAway(::accept(socket_.fd(), nullptr, nullptr));
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
