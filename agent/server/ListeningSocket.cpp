#include "agent/server/ListeningSocket.h"

#include <cerrno>
#include <cstring>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

#include "agent/base/SocketAddress.h"

namespace Agent {

namespace {

constexpr int backlog = 64;
constexpr mode_t allModes = 0777;
constexpr auto sameOwner = static_cast<uid_t>(-1);

FileDescriptor openSocket(const std::string& path) {
    FileDescriptor file(::socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    if (!file) {
        failSocket(path, std::strerror(errno));
    }
    return file;
}

} // namespace

ListeningSocket::ListeningSocket(SocketPlace place)
    : place_(std::move(place)), lock_(place_.path), file_(openSocket(place_.path)) {
    removeStale();
    listen();
}

ListeningSocket::~ListeningSocket() {
    if (identity_ && isThere()) {
        ::unlink(place_.path.c_str());
    }
}

void ListeningSocket::listen() {
    const sockaddr_un address = socketAddress(place_.path);
    const mode_t before = ::umask(allModes & ~place_.mode);
    const int bound =
        ::bind(file_.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address);
    const int error = errno;
    ::umask(before);
    if (bound != 0) {
        failSocket(place_.path, std::strerror(error));
    }
    identity_ = fileNamed(place_.path);
    // Nobody can connect before it listens.
    if (place_.group && ::lchown(place_.path.c_str(), sameOwner, *place_.group) != 0) {
        failSocket(place_.path,
                   std::string("cannot give it to its group: ") + std::strerror(errno));
    }
    if (!identity_ || ::listen(file_.get(), backlog) != 0) {
        failSocket(place_.path, std::strerror(errno));
    }
}

void ListeningSocket::removeStale() const {
    struct stat status {};
    if (::lstat(place_.path.c_str(), &status) != 0) {
        return;
    }
    if (!S_ISSOCK(status.st_mode)) {
        failSocket(place_.path, "there is a file that is no socket");
    }
    const int error = connectSocket(openSocket(place_.path), place_.path);
    if (error == 0 || error == EAGAIN) {
        failSocket(place_.path, "is in use");
    }
    if (error == ECONNREFUSED) {
        ::unlink(place_.path.c_str());
    }
}

} // namespace Agent
