#include "agent/linux/NamespaceWatch.h"
#include "agent/linux/SystemError.h"
#include "agent/linux/Utf8.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <dirent.h>
#include <limits>
#include <memory>
#include <set>
#include <string_view>
#include <sys/inotify.h>
#include <sys/stat.h>

namespace Agent::Linux {

namespace {

constexpr const char* parent = "/run";
constexpr std::string_view folderName = "netns";
constexpr const char* folder = "/run/netns";

/// Seconds between looks at a file that is not a namespace yet; doubled with each.
constexpr double firstPause = 0.01;
constexpr double longestPause = 1;
/// Reads of one call; what is left keeps the descriptor readable.
constexpr int readBatch = 16;

std::set<std::string> namesInFolder() {
    std::set<std::string> names;
    std::unique_ptr<DIR, int (*)(DIR*)> dir(::opendir(folder), ::closedir);
    while (const dirent* entry = dir ? ::readdir(dir.get()) : nullptr) {
        std::string_view name = entry->d_name;
        if (name != "." && name != "..") {
            names.emplace(name);
        }
    }
    return names;
}

bool isThere(const std::string& path) {
    struct stat status {};
    return ::lstat(path.c_str(), &status) == 0;
}

} // namespace

NamespaceWatch::NamespaceWatch(MonotonicClock clock)
    : clock_(std::move(clock)), inotify_(::inotify_init1(IN_CLOEXEC | IN_NONBLOCK)) {
    if (!inotify_
        || ::inotify_add_watch(inotify_.get(), parent, IN_CREATE | IN_MOVED_TO | IN_ONLYDIR) < 0) {
        throw SystemError("cannot watch /run", errno);
    }
    attach();
}

double NamespaceWatch::retryAt() const {
    double first = std::numeric_limits<double>::infinity();
    for (const auto& waiting : waiting_) {
        first = std::min(first, waiting.second.lookAt);
    }
    return first;
}

void NamespaceWatch::onReadable() {
    alignas(inotify_event) std::array<char, 4096> buffer{};
    for (int i = 0; i < readBatch; ++i) {
        ssize_t length = ::read(inotify_.get(), buffer.data(), buffer.size());
        if (length <= 0) {
            break;
        }
        for (std::size_t at = 0; at < static_cast<std::size_t>(length);) {
            const auto& event = *reinterpret_cast<const inotify_event*>(buffer.data() + at);
            handle(event);
            at += sizeof event + event.len;
        }
    }
    lookAgain();
}

void NamespaceWatch::handle(const inotify_event& event) {
    std::string name = event.len == 0 ? "" : event.name;
    if ((event.mask & IN_Q_OVERFLOW) != 0) {
        attach();
    } else if (event.wd != folderWatch_) {
        if (name == folderName) {
            attach();
        }
    } else if ((event.mask & (IN_DELETE_SELF | IN_MOVE_SELF | IN_IGNORED)) != 0) {
        attach();
    } else if ((event.mask & (IN_DELETE | IN_MOVED_FROM)) != 0) {
        // Even if the name is there again: a new namespace may have been given the identity of the
        // one that ended.
        vanish(name);
        look(name);
    } else {
        look(name);
    }
}

void NamespaceWatch::attach() {
    folderWatch_ = ::inotify_add_watch(inotify_.get(), folder,
                                       IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO
                                           | IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR);
    scan();
}

void NamespaceWatch::scan() {
    std::set<std::string> names = namesInFolder();
    for (const auto& known : known_) {
        names.insert(known.first);
    }
    for (const std::string& name : names) {
        look(name);
    }
}

void NamespaceWatch::look(const std::string& name) {
    if (!isUtf8(name)) {
        return;
    }
    std::string path = std::string(folder) + "/" + name;
    auto identity = NetworkNamespace::identify(path);
    auto known = known_.find(name);
    if (known != known_.end() && identity != known->second) {
        vanish(name);
    }
    if (identity) {
        waiting_.erase(name);
        if (known_.emplace(name, *identity).second) {
            changes_.push_back({name, true});
        }
    } else if (isThere(path)) {
        waiting_.try_emplace(name, Waiting{clock_() + firstPause, firstPause});
    } else {
        waiting_.erase(name);
    }
}

void NamespaceWatch::vanish(const std::string& name) {
    waiting_.erase(name);
    if (known_.erase(name) != 0) {
        changes_.push_back({name, false});
    }
}

void NamespaceWatch::lookAgain() {
    double now = clock_();
    std::vector<std::string> due;
    for (auto& [name, waiting] : waiting_) {
        if (waiting.lookAt <= now) {
            waiting.pause = std::min(waiting.pause * 2, longestPause);
            waiting.lookAt = now + waiting.pause;
            due.push_back(name);
        }
    }
    for (const std::string& name : due) {
        look(name);
    }
}

} // namespace Agent::Linux
