#include "agent/base/SocketAddress.h"

#include <algorithm>
#include <cerrno>
#include <optional>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include "agent/base/Errors.h"
#include "agent/base/StateFolder.h"

namespace Agent {

namespace {

/// The number of the network namespace, where it is not that of the system as a whole. What
/// settings it has tells that, to everybody: some are the system's alone.
std::optional<ino_t> ownNetwork() {
    struct stat status {};
    const bool isSystems = ::access("/proc/sys/net/core/netdev_budget", F_OK) == 0;
    return !isSystems && ::stat("/proc/self/ns/net", &status) == 0 ? std::optional(status.st_ino)
                                                                   : std::nullopt;
}

} // namespace

std::string defaultSocketPath() {
    const std::string folder = runtimeFolder();
    const auto network = ownNetwork();
    const std::string suffix = network ? '-' + std::to_string(*network) : std::string();
    return folder.empty() ? "" : folder + "/directnet" + suffix + ".sock";
}

sockaddr_un socketAddress(const std::string& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.empty() || path.size() >= sizeof address.sun_path) {
        throw FailureError(path + ": no path for a socket: must have 1 to "
                           + std::to_string(sizeof address.sun_path - 1) + " bytes");
    }
    std::copy(path.begin(), path.end(), address.sun_path);
    return address;
}

int connectSocket(const FileDescriptor& file, const std::string& path) {
    const sockaddr_un address = socketAddress(path);
    const auto* generic = reinterpret_cast<const sockaddr*>(&address);
    return ::connect(file.get(), generic, sizeof address) == 0 ? 0 : errno;
}

} // namespace Agent
