#include "agent/server/SocketLock.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "agent/server/SocketFile.h"

namespace Agent {

namespace {

constexpr mode_t mode = 0600;
/// How often the file may be removed, by an agent that ends, between its opening and its locking.
constexpr int attempts = 10;

} // namespace

SocketLock::SocketLock(const std::string& path) : name_(path + ".lock") {
    for (int attempt = 0; attempt < attempts; ++attempt) {
        if (take(path)) {
            return;
        }
    }
    failSocket(path, "is in use by agents that come and go");
}

SocketLock::~SocketLock() {
    struct stat opened {};
    if (file_ && ::fstat(file_.get(), &opened) == 0 && fileNamed(name_) == FileIdentity(opened)) {
        ::unlink(name_.c_str()); // and not that of another agent, if somebody has removed ours
    }
}

/// Returns false when the file that was locked has been removed or replaced meanwhile.
bool SocketLock::take(const std::string& path) {
    file_ = FileDescriptor(::open(
        name_.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC, mode));
    struct stat opened {};
    if (!file_ || ::fstat(file_.get(), &opened) != 0) {
        failSocket(path, "cannot open " + name_ + ": " + std::strerror(errno));
    }
    if (!S_ISREG(opened.st_mode) || opened.st_uid != ::geteuid()) {
        failSocket(path, name_ + " is no file of this user");
    }
    if (::flock(file_.get(), LOCK_EX | LOCK_NB) != 0) {
        failSocket(path,
                   errno == EWOULDBLOCK ? "is in use by another agent" : std::strerror(errno));
    }
    return fileNamed(name_) == FileIdentity(opened);
}

} // namespace Agent
