#include "agent/linux/NetlinkSocket.h"
#include "agent/base/SystemError.h"

#include <cerrno>
#include <linux/rtnetlink.h>
#include <sys/socket.h>
#include <sys/uio.h>

namespace Agent::Linux {

namespace {

/// Twice what the kernel puts into one datagram of a listing.
constexpr std::size_t initialBuffer = std::size_t{64} * 1024;

} // namespace

NetlinkSocket::NetlinkSocket()
    : file_(::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC | SOCK_NONBLOCK, NETLINK_ROUTE)),
      buffer_(initialBuffer) {
    sockaddr_nl any{};
    any.nl_family = AF_NETLINK;
    if (!file_ || ::bind(fd(), reinterpret_cast<const sockaddr*>(&any), sizeof any) != 0) {
        throw SystemError("cannot open a route netlink socket", errno);
    }
}

void NetlinkSocket::resizeBuffer(int bytes) {
    // The first passes the system's limit but is for the privileged.
    if (::setsockopt(fd(), SOL_SOCKET, SO_RCVBUFFORCE, &bytes, sizeof bytes) != 0) {
        ::setsockopt(fd(), SOL_SOCKET, SO_RCVBUF, &bytes, sizeof bytes);
    }
}

void NetlinkSocket::subscribe(int group) {
    if (::setsockopt(fd(), SOL_NETLINK, NETLINK_ADD_MEMBERSHIP, &group, sizeof group) != 0) {
        throw SystemError("cannot subscribe to route netlink", errno);
    }
}

bool NetlinkSocket::checkStrictly() {
    int on = 1;
    return ::setsockopt(fd(), SOL_NETLINK, NETLINK_GET_STRICT_CHK, &on, sizeof on) == 0;
}

void NetlinkSocket::askForWords() {
    int on = 1;
    ::setsockopt(fd(), SOL_NETLINK, NETLINK_EXT_ACK, &on, sizeof on);
    ::setsockopt(fd(), SOL_NETLINK, NETLINK_CAP_ACK, &on, sizeof on);
}

int NetlinkSocket::bufferSize() const {
    int bytes = 0;
    socklen_t size = sizeof bytes;
    return ::getsockopt(fd(), SOL_SOCKET, SO_RCVBUF, &bytes, &size) == 0 ? bytes : 0;
}

bool NetlinkSocket::send(std::span<const std::byte> request) {
    sockaddr_nl kernel{};
    kernel.nl_family = AF_NETLINK;
    ssize_t sent = 0;
    do {
        sent = ::sendto(fd(), request.data(), request.size(), 0,
                        reinterpret_cast<const sockaddr*>(&kernel), sizeof kernel);
    } while (sent < 0 && errno == EINTR);
    return sent == static_cast<ssize_t>(request.size());
}

NetlinkSocket::Reading NetlinkSocket::receive() {
    size_ = 0;
    sockaddr_nl sender{};
    iovec area{buffer_.data(), buffer_.size()};
    msghdr message{};
    message.msg_name = &sender;
    message.msg_namelen = sizeof sender;
    message.msg_iov = &area;
    message.msg_iovlen = 1;
    ssize_t length = 0;
    do {
        length = ::recvmsg(fd(), &message, MSG_TRUNC);
    } while (length < 0 && errno == EINTR);
    if (length < 0) {
        return errno == EAGAIN || errno == EWOULDBLOCK ? Reading::Empty : Reading::Lost;
    }
    auto size = static_cast<std::size_t>(length);
    if ((message.msg_flags & MSG_TRUNC) != 0) {
        buffer_.resize(size);
        return Reading::Lost;
    }
    // Any process may write to the socket; only the kernel's word counts.
    if (message.msg_namelen == sizeof sender && sender.nl_pid == 0) {
        size_ = size;
    }
    return Reading::Data;
}

} // namespace Agent::Linux
