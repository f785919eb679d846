#include "agent/base/SocketAddress.h"

#include <algorithm>
#include <cerrno>
#include <sys/socket.h>

#include "agent/base/Errors.h"
#include "agent/base/StateFolder.h"

namespace Agent {

std::string defaultSocketPath() {
    const std::string folder = runtimeFolder();
    return folder.empty() ? "" : folder + "/directnet.sock";
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
