#include "agent/viplog/VipLogFile.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <utility>

#include "agent/base/Errors.h"
#include "agent/viplog/VipLogLock.h"

namespace Agent {

namespace {

/// Milliseconds after which a file is looked at again though nothing told of a change: a writer
/// lets go of its lock after it is seen to close the file.
constexpr int pause = 200;

FileDescriptor openFile(const std::string& name) {
    const int file = name == "-" ? ::fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 0)
                                 : ::open(name.c_str(), O_RDONLY | O_CLOEXEC);
    if (file < 0) {
        throw BadInputError(name + ": " + std::strerror(errno));
    }
    return FileDescriptor(file);
}

} // namespace

VipLogFile::VipLogFile(std::string name, bool follow)
    : name_(std::move(name)), file_(openFile(name_)) {
    struct stat status {};
    ::fstat(file_.get(), &status);
    if (S_ISDIR(status.st_mode)) {
        throw BadInputError(name_ + ": is a directory");
    }
    if (follow && S_ISREG(status.st_mode)) {
        changes_ = FileDescriptor(::inotify_init1(IN_CLOEXEC | IN_NONBLOCK));
        const std::string path = "/proc/self/fd/" + std::to_string(file_.get());
        if (::inotify_add_watch(changes_.get(), path.c_str(), IN_MODIFY | IN_CLOSE_WRITE) < 0) {
            throw FailureError(name_ + ": cannot follow it: " + std::strerror(errno));
        }
    }
}

std::string_view VipLogFile::read() {
    for (;;) {
        // Asked first, so that what a writer left that ends meanwhile is read.
        const bool mayGrow = changes_ && isBeingWritten();
        const ssize_t size = ::read(file_.get(), piece_.data(), piece_.size());
        if (size > 0) {
            return {piece_.data(), static_cast<std::size_t>(size)};
        }
        if (size < 0 && errno != EINTR) {
            throw FailureError(name_ + ": " + std::strerror(errno));
        }
        if (size == 0 && !mayGrow) {
            return {};
        }
        if (size == 0) {
            waitForMore();
        }
    }
}

/// Whether this very log is: one that has been cut short is another writer's now.
bool VipLogFile::isBeingWritten() const {
    struct stat status {};
    return ::fstat(file_.get(), &status) == 0 && status.st_size >= ::lseek(file_.get(), 0, SEEK_CUR)
           && isVipLogLocked(file_.get());
}

void VipLogFile::waitForMore() const {
    pollfd polled{changes_.get(), POLLIN, 0};
    ::poll(&polled, 1, pause);
    std::array<char, 4096> events;
    while (::read(changes_.get(), events.data(), events.size()) > 0) {
    }
}

} // namespace Agent
