#include "tables/reader/FolderWatch.h"

#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <sys/epoll.h>
#include <sys/timerfd.h>

#include "tables/layout/FileLayout.h"

namespace Tables {

bool FolderWatch::open(ErrorText& error) {
    events_.reset(::epoll_create1(EPOLL_CLOEXEC));
    timer_.reset(::timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC | TFD_NONBLOCK));
    if (!events_ || !timer_ || !add(timer_, EPOLLIN)) {
        error.set("cannot wait for tables: %s", std::strerror(errno));
        return false;
    }
    isIncomplete(true);
    return true;
}

bool FolderWatch::add(const Descriptor& descriptor, std::uint32_t events) const {
    epoll_event event{};
    event.events = events;
    event.data.fd = descriptor.get();
    return ::epoll_ctl(events_.get(), EPOLL_CTL_ADD, descriptor.get(), &event) == 0;
}

void FolderWatch::acknowledge() {
    epoll_event events[2];
    ::epoll_wait(events_.get(), events, 2, 0);
    std::uint64_t expirations = 0;
    [[maybe_unused]] const auto size = ::read(timer_.get(), &expirations, sizeof expirations);
}

void FolderWatch::look(const Folder& folder) {
    if (bell_ && generation_ == folder.generation()) {
        return;
    }
    generation_ = folder.generation();
    struct stat status {};
    if (::fstatat(folder.descriptor(), bellName, &status, AT_SYMLINK_NOFOLLOW) != 0
        || !S_ISFIFO(status.st_mode)) {
        bell_.reset();
        return;
    }
    if (bell_ && FileIdentity::of(status) == bellIdentity_) {
        return;
    }
    bell_.reset(
        ::openat(folder.descriptor(), bellName, O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOFOLLOW));
    if (!bell_ || ::fstat(bell_.get(), &status) != 0 || !S_ISFIFO(status.st_mode)
        || !add(bell_, EPOLLIN | EPOLLET)) {
        bell_.reset();
        return;
    }
    bellIdentity_ = FileIdentity::of(status);
}

void FolderWatch::isIncomplete(bool incomplete) {
    const bool urgent = incomplete || !bell_;
    if (isTimed_ && urgent == isUrgent_) {
        return;
    }
    itimerspec often{};
    often.it_interval.tv_nsec = urgent ? missingNs : 0;
    often.it_interval.tv_sec = urgent ? 0 : presentSeconds;
    often.it_value = often.it_interval;
    ::timerfd_settime(timer_.get(), 0, &often, nullptr);
    isTimed_ = true;
    isUrgent_ = urgent;
}

} // namespace Tables
