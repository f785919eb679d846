#include "agent/client/AgentConnection.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <initializer_list>
#include <poll.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <utility>

#include "agent/base/Errors.h"
#include "agent/base/SocketAddress.h"
#include "agent/document/JsonWriter.h"

namespace Agent {

namespace {

using Members = std::initializer_list<std::pair<std::string_view, std::string_view>>;

/// Seconds for which an agent may be too busy to take a connection.
constexpr int connectPatience = 5;

/// With the members that are not empty.
std::string requestOf(const Members& members, bool isWatch) {
    std::string line;
    JsonWriter writer(line);
    writer.beginObject();
    if (isWatch) {
        writer.member("watch", true);
    }
    for (const auto& [key, value] : members) {
        if (!value.empty()) {
            writer.member(key, value);
        }
    }
    writer.endObject();
    return line + '\n';
}

} // namespace

AgentConnection::AgentConnection(std::string path, const std::string& request)
    : path_(path.empty() ? defaultSocketPath() : std::move(path)),
      file_(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    if (path_.empty()) {
        throw FailureError(
            "there is no runtime folder to find the agent's socket in; use --socket");
    }
    // One that is stopped takes no more connections at some point.
    const timeval patience{connectPatience, 0};
    ::setsockopt(file_.get(), SOL_SOCKET, SO_SNDTIMEO, &patience, sizeof patience);
    if (const int error = connectSocket(file_, path_); error != 0) {
        throw FailureError("cannot reach the agent at " + path_ + ": " + std::strerror(error));
    }
    // What cannot be sent was refused, and the answer says why.
    static_cast<void>(::send(file_.get(), request.data(), request.size(), MSG_NOSIGNAL));
}

std::optional<AgentConnection::Line> AgentConnection::next() {
    std::size_t end = received_.find('\n', taken_);
    while (end == std::string::npos) {
        if (!receive()) {
            throw FailureError("the agent at " + path_ + " has closed the connection");
        }
        end = received_.find('\n', taken_);
    }
    const std::string_view text = std::string_view(received_).substr(taken_, end - taken_);
    Line line{std::string(text), ParsedJson(text)};
    taken_ = end + 1;
    const JsonValue object = line.json.value();
    if (!object.isObject()) {
        throw FailureError(path_ + ": no agent answers there");
    }
    if (const JsonValue error = object.member("error"); error.exists()) {
        throw FailureError("the agent refuses: " + error.string());
    }
    return object.member("end").exists() ? std::nullopt : std::optional(std::move(line));
}

bool AgentConnection::waitForMore(int milliseconds) const {
    pollfd polled{file_.get(), POLLIN, 0};
    return hasMore() || ::poll(&polled, 1, milliseconds) > 0;
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

std::string showRequest(const std::string& topic, const std::string& vrf, const std::string& prefix,
                        const std::string& intf) {
    return requestOf({{"show", topic}, {"vrf", vrf}, {"prefix", prefix}, {"intf", intf}}, false);
}

std::string watchRequest(const std::string& vrf, const std::string& prefix) {
    return requestOf({{"vrf", vrf}, {"prefix", prefix}}, true);
}

std::string traceRequest(int level) {
    std::string line;
    appendJsonLine(line, "trace", level);
    return line;
}

std::string reloadRequest() {
    std::string line;
    appendJsonLine(line, "reload", true);
    return line;
}

std::string waitRequest(const std::vector<std::string>& vrfs) {
    std::string line;
    JsonWriter writer(line);
    writer.beginObject();
    writer.key("wait");
    writer.beginArray();
    for (const std::string& vrf : vrfs) {
        writer.value(vrf);
    }
    writer.endArray();
    writer.endObject();
    return line + '\n';
}

} // namespace Agent
