#include "agent/linux/NamespaceWatch.h"
#include "agent/base/SystemError.h"

#include <array>
#include <cerrno>
#include <cstddef>
#include <fcntl.h>
#include <sys/epoll.h>
#include <sys/inotify.h>

namespace Agent::Linux {

namespace {

constexpr const char* parent = "/run";
constexpr const char* folder = "/run/netns";

/// Reads of one call; what is left keeps the descriptor readable.
constexpr int readBatch = 16;

[[noreturn]] void fail() { throw SystemError("cannot watch network namespaces", errno); }

FileDescriptor opened(int descriptor) {
    if (descriptor < 0) {
        fail();
    }
    return FileDescriptor(descriptor);
}

void watch(const FileDescriptor& poll, const FileDescriptor& file, std::uint32_t events) {
    epoll_event event{};
    event.events = events;
    if (::epoll_ctl(poll.get(), EPOLL_CTL_ADD, file.get(), &event) != 0) {
        fail();
    }
}

} // namespace

NamespaceWatch::NamespaceWatch(std::set<std::string> names)
    : names_(std::move(names)), inotify_(opened(::inotify_init1(IN_CLOEXEC | IN_NONBLOCK))),
      mounts_(opened(::open("/proc/thread-self/mountinfo", O_RDONLY | O_CLOEXEC))),
      poll_(opened(::epoll_create1(EPOLL_CLOEXEC))) {
    // The list of mounts is always readable; that it has changed is told as urgent.
    watch(poll_, mounts_, EPOLLPRI);
    watch(poll_, inotify_, EPOLLIN);
    watchFolder();
    lookAtAll();
}

void NamespaceWatch::onReadable() {
    readEvents();
    watchFolder();
    lookAtAll();
}

/// Watches the folder that is there now, and for one to come.
void NamespaceWatch::watchFolder() {
    std::uint32_t events = IN_CREATE | IN_MOVED_TO | IN_ONLYDIR;
    ::inotify_add_watch(inotify_.get(), parent, events);
    events |= IN_DELETE | IN_MOVED_FROM | IN_DELETE_SELF | IN_MOVE_SELF;
    folderWatch_ = ::inotify_add_watch(inotify_.get(), folder, events);
}

/// Everything is looked at after an event, so only what a look does not show is taken from it: a
/// new namespace may have been given the identity of the one that has ended.
void NamespaceWatch::readEvents() {
    alignas(inotify_event) std::array<char, 4096> buffer{};
    for (int i = 0; i < readBatch; ++i) {
        const ssize_t length = ::read(inotify_.get(), buffer.data(), buffer.size());
        if (length <= 0) {
            return;
        }
        for (std::size_t at = 0; at < static_cast<std::size_t>(length);) {
            const auto& event = *reinterpret_cast<const inotify_event*>(buffer.data() + at);
            if (event.wd == folderWatch_ && (event.mask & (IN_DELETE | IN_MOVED_FROM)) != 0
                && event.len != 0) {
                vanish(event.name);
            }
            at += sizeof event + event.len;
        }
    }
}

void NamespaceWatch::lookAtAll() {
    for (const std::string& name : names_) {
        look(name);
    }
}

void NamespaceWatch::look(const std::string& name) {
    const auto identity = NetworkNamespace::identify(std::string(folder) + '/' + name);
    const auto known = known_.find(name);
    if (known != known_.end()) {
        if (identity == known->second || identity == NetworkNamespace::Identity{}) {
            return;
        }
        vanish(name);
    }
    if (identity) {
        known_.emplace(name, *identity);
        events_.push_back({name, true});
    }
}

void NamespaceWatch::vanish(const std::string& name) {
    if (known_.erase(name) != 0) {
        events_.push_back({name, false});
    }
}

} // namespace Agent::Linux
