#include "agent/linux/NetworkNamespace.h"
#include "agent/linux/SystemError.h"

#include <cerrno>
#include <exception>
#include <fcntl.h>
#include <linux/magic.h>
#include <linux/nsfs.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <thread>

namespace Agent::Linux {

namespace {

// Not to block on whatever else may lie there.
FileDescriptor openFile(const std::string& path) {
    return FileDescriptor(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
}

/// The file is there before the namespace is bound to it, so being there means little.
bool isNetworkNamespace(const FileDescriptor& file) {
    struct statfs status {};
    return ::fstatfs(file.get(), &status) == 0
           && static_cast<unsigned long>(status.f_type) == NSFS_MAGIC
           && ::ioctl(file.get(), NS_GET_NSTYPE) == CLONE_NEWNET;
}

} // namespace

NetworkNamespace::NetworkNamespace(const std::string& name) {
    if (name.empty() || name == "." || name == ".." || name.find('/') != std::string::npos) {
        throw Orb::ParseError("no name of a network namespace: " + name);
    }
    int error = ENOENT;
    for (const char* folder : {"/run/netns/", "/var/run/netns/"}) {
        FileDescriptor file = openFile(folder + name);
        if (file && isNetworkNamespace(file)) {
            file_ = std::move(file);
            return;
        }
        if (file || errno != ENOENT) {
            error = file ? EINVAL : errno;
        }
    }
    throw SystemError("cannot open the network namespace " + name, error);
}

void NetworkNamespace::run(const std::function<void()>& action) const {
    if (!file_) {
        action();
        return;
    }
    std::exception_ptr failure;
    std::thread([&] {
        try {
            if (::setns(file_.get(), CLONE_NEWNET) != 0) {
                throw SystemError("cannot enter the network namespace", errno);
            }
            action();
        } catch (...) {
            failure = std::current_exception();
        }
    }).join();
    if (failure) {
        std::rethrow_exception(failure);
    }
}

std::optional<NetworkNamespace::Identity> NetworkNamespace::identify(const std::string& path) {
    FileDescriptor file = openFile(path);
    struct stat status {};
    if (!file || !isNetworkNamespace(file) || ::fstat(file.get(), &status) != 0) {
        return std::nullopt;
    }
    return Identity{status.st_dev, status.st_ino};
}

} // namespace Agent::Linux
