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
/// Leaves reading and writing to the owner and the group.
constexpr mode_t mask = 0117;

FileDescriptor openSocket(const std::string& path) {
    FileDescriptor file(::socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    if (!file) {
        failSocket(path, std::strerror(errno));
    }
    return file;
}

} // namespace

ListeningSocket::ListeningSocket(std::string path)
    : path_(std::move(path)), lock_(path_), file_(openSocket(path_)) {
    removeStale();
    listen();
}

ListeningSocket::~ListeningSocket() {
    if (identity_ && fileNamed(path_) == identity_) {
        ::unlink(path_.c_str());
    }
}

void ListeningSocket::listen() {
    const sockaddr_un address = socketAddress(path_);
    const mode_t before = ::umask(mask);
    const int bound =
        ::bind(file_.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address);
    const int error = errno;
    ::umask(before);
    if (bound != 0) {
        failSocket(path_, std::strerror(error));
    }
    identity_ = fileNamed(path_);
    if (!identity_ || ::listen(file_.get(), backlog) != 0) {
        failSocket(path_, std::strerror(errno));
    }
}

void ListeningSocket::removeStale() const {
    struct stat status {};
    if (::lstat(path_.c_str(), &status) != 0) {
        return;
    }
    if (!S_ISSOCK(status.st_mode)) {
        failSocket(path_, "there is a file that is no socket");
    }
    const int error = connectSocket(openSocket(path_), path_);
    if (error == 0 || error == EAGAIN) {
        failSocket(path_, "is in use");
    }
    if (error == ECONNREFUSED) {
        ::unlink(path_.c_str());
    }
}

} // namespace Agent
