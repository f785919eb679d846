#include "agent/server/ListeningSocket.h"

#include <cerrno>
#include <cstring>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

#include "agent/base/Errors.h"
#include "agent/base/SocketAddress.h"

namespace Agent {

namespace {

constexpr int backlog = 64;
/// Leaves reading and writing to the owner and the group.
constexpr mode_t mask = 0117;

[[noreturn]] void fail(const std::string& path, const std::string& why) {
    throw FailureError("socket " + path + ": " + why);
}

FileDescriptor openSocket(const std::string& path) {
    FileDescriptor file(::socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    if (!file) {
        fail(path, std::strerror(errno));
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
    struct stat status {};
    if (::lstat(path_.c_str(), &status) == 0 && status.st_dev == device_
        && status.st_ino == inode_) {
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
        fail(path_, std::strerror(error));
    }
    struct stat status {};
    if (::listen(file_.get(), backlog) != 0 || ::lstat(path_.c_str(), &status) != 0) {
        fail(path_, std::strerror(errno));
    }
    device_ = status.st_dev;
    inode_ = status.st_ino;
}

void ListeningSocket::removeStale() const {
    const sockaddr_un address = socketAddress(path_);
    struct stat status {};
    if (::lstat(path_.c_str(), &status) != 0) {
        return;
    }
    if (!S_ISSOCK(status.st_mode)) {
        fail(path_, "there is a file that is no socket");
    }
    const FileDescriptor probe = openSocket(path_);
    const int connected =
        ::connect(probe.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address);
    if (connected == 0 || errno == EAGAIN) {
        fail(path_, "is in use");
    }
    if (errno == ECONNREFUSED) {
        ::unlink(path_.c_str());
    }
}

} // namespace Agent
