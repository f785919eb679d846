#include "agent/server/SocketLock.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "agent/base/Errors.h"

namespace Agent {

namespace {

constexpr mode_t mode = 0600;
/// How often an agent that ends may take the file away just before it is locked.
constexpr int attempts = 10;

[[noreturn]] void failToLock(const std::string& path, const std::string& why) {
    throw FailureError("socket " + path + ": " + why);
}

} // namespace

SocketLock::SocketLock(const std::string& path) : name_(path + ".lock") {
    for (int attempt = 0; attempt < attempts; ++attempt) {
        if (take(path)) {
            return;
        }
    }
    failToLock(path, "is in use by agents that come and go");
}

SocketLock::~SocketLock() { ::unlink(name_.c_str()); }

/// Returns false when the file that was locked has lost its name meanwhile.
bool SocketLock::take(const std::string& path) {
    file_ = FileDescriptor(::open(
        name_.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC, mode));
    struct stat opened {};
    if (!file_ || ::fstat(file_.get(), &opened) != 0) {
        failToLock(path, "cannot open " + name_ + ": " + std::strerror(errno));
    }
    if (!S_ISREG(opened.st_mode) || opened.st_uid != ::geteuid()) {
        failToLock(path, name_ + " is no file of this user");
    }
    if (::flock(file_.get(), LOCK_EX | LOCK_NB) != 0) {
        failToLock(path, errno == EWOULDBLOCK ? "is in use by another agent" : std::strerror(errno));
    }
    struct stat named {};
    return ::lstat(name_.c_str(), &named) == 0 && named.st_dev == opened.st_dev
           && named.st_ino == opened.st_ino;
}

} // namespace Agent
