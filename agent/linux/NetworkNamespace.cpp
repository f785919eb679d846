#include "agent/linux/NetworkNamespace.h"
#include "agent/base/SystemError.h"

#include <cerrno>
#include <exception>
#include <fcntl.h>
#include <linux/magic.h>
#include <linux/nsfs.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <system_error>
#include <thread>

namespace Agent::Linux {

namespace {

// Not to block on whatever else may lie there.
FileDescriptor openFile(const std::string& path) {
    return FileDescriptor(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
}

bool isNamespace(const struct statfs& status) {
    return static_cast<unsigned long>(status.f_type) == NSFS_MAGIC;
}

/// The file is there before the namespace is bound to it, so being there means little.
bool isNetworkNamespace(const FileDescriptor& file) {
    struct statfs status {};
    return ::fstatfs(file.get(), &status) == 0 && isNamespace(status)
           && ::ioctl(file.get(), NS_GET_NSTYPE) == CLONE_NEWNET;
}

FileDescriptor openNamed(const std::string& name) {
    int error = ENOENT;
    for (const char* folder : {"/run/netns/", "/var/run/netns/"}) {
        FileDescriptor file = openFile(folder + name);
        if (file && isNetworkNamespace(file)) {
            return file;
        }
        if (file || errno != ENOENT) {
            error = file ? EINVAL : errno;
        }
    }
    throw SystemError("cannot open the network namespace " + name, error);
}

void runOnThread(const std::function<void()>& action) {
    std::exception_ptr failure;
    std::thread([&] {
        try {
            action();
        } catch (...) {
            failure = std::current_exception();
        }
    }).join();
    if (failure) {
        std::rethrow_exception(failure);
    }
}

} // namespace

NetworkNamespace::NetworkNamespace(const std::string& name) : name_(name) {
    if (name.empty() || name == "." || name == ".." || name.find('/') != std::string::npos) {
        throw Orb::ParseError("no name of a network namespace: " + name);
    }
    file_ = openNamed(name);
    FileDescriptor own;
    run([&] {
        // The named file keeps its mount busy for as long as it is open; this one has none.
        own = openFile("/proc/thread-self/ns/net");
        if (!own) {
            throw SystemError("cannot keep the network namespace " + name_ + " open", errno);
        }
    });
    file_ = std::move(own);
}

void NetworkNamespace::run(const std::function<void()>& action) const {
    if (!file_) {
        action();
        return;
    }
    const std::string failure = "cannot enter the network namespace " + name_;
    try {
        runOnThread([&] {
            if (::setns(file_.get(), CLONE_NEWNET) != 0) {
                throw SystemError(failure, errno);
            }
            action();
        });
    } catch (const std::system_error& error) { // no thread
        throw SystemError(failure, error.code().value());
    }
}

std::optional<NetworkNamespace::Identity> NetworkNamespace::identify(const std::string& path) {
    struct statfs system {};
    struct stat file {};
    if (::statfs(path.c_str(), &system) != 0 || ::stat(path.c_str(), &file) != 0) {
        const bool isAbsent = errno == ENOENT || errno == ENOTDIR || errno == ELOOP;
        return isAbsent ? std::nullopt : std::optional(Identity{});
    }
    return isNamespace(system) ? std::optional(Identity{file.st_dev, file.st_ino}) : std::nullopt;
}

} // namespace Agent::Linux
