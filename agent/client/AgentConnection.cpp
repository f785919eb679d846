#include "agent/client/AgentConnection.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <sys/socket.h>
#include <utility>

#include "agent/base/Errors.h"
#include "agent/base/SocketAddress.h"

namespace Agent {

AgentConnection::AgentConnection(std::string path, const Json& request)
    : path_(path.empty() ? defaultSocketPath() : std::move(path)),
      file_(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    if (path_.empty()) {
        throw FailureError(
            "there is no runtime folder to find the agent's socket in; use --socket");
    }
    const sockaddr_un address = socketAddress(path_);
    if (::connect(file_.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        throw FailureError("cannot reach the agent at " + path_ + ": " + std::strerror(errno));
    }
    // What cannot be sent was refused, and the answer says why.
    const std::string line = request.dump() + '\n';
    static_cast<void>(::send(file_.get(), line.data(), line.size(), MSG_NOSIGNAL));
}

std::optional<AgentConnection::Json> AgentConnection::next() {
    std::size_t end = received_.find('\n', taken_);
    while (end == std::string::npos) {
        if (!receive()) {
            throw FailureError("the agent at " + path_ + " has closed the connection");
        }
        end = received_.find('\n', taken_);
    }
    Json line = Json::parse(received_.data() + taken_, received_.data() + end, nullptr, false);
    taken_ = end + 1;
    if (!line.is_object()) {
        throw FailureError(path_ + ": no agent answers there");
    }
    if (line.contains("error")) {
        throw FailureError("the agent refuses: " + line["error"].get<std::string>());
    }
    return line.contains("end") ? std::nullopt : std::optional<Json>(std::move(line));
}

bool AgentConnection::receive() {
    received_.erase(0, std::exchange(taken_, 0));
    std::array<char, 65536> buffer;
    ssize_t size = 0;
    do {
        size = ::recv(file_.get(), buffer.data(), buffer.size(), 0);
    } while (size < 0 && errno == EINTR);
    if (size > 0) {
        received_.append(buffer.data(), static_cast<std::size_t>(size));
    }
    return size > 0;
}

} // namespace Agent
