#include "agent/service/NotifySocket.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <sys/socket.h>
#include <sys/un.h>

namespace Agent {

NotifySocket::NotifySocket(const char* name) : address_(name == nullptr ? "" : name) {
    const bool isAbstract = address_.starts_with('@');
    if (address_.size() < 2 || address_.size() >= sizeof(sockaddr_un::sun_path)
        || (!isAbstract && !address_.starts_with('/'))) {
        return;
    }
    if (isAbstract) {
        address_[0] = '\0';
    }
    file_ = FileDescriptor(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0));
}

bool NotifySocket::send(std::string_view text) const {
    sockaddr_un to{};
    to.sun_family = AF_UNIX;
    std::copy(address_.begin(), address_.end(), to.sun_path);
    const auto size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + address_.size());
    return ::sendto(file_.get(), text.data(), text.size(), MSG_DONTWAIT | MSG_NOSIGNAL,
                    reinterpret_cast<const sockaddr*>(&to), size)
               >= 0
           || (errno != EAGAIN && errno != ENOBUFS && errno != EINTR);
}

} // namespace Agent
