#include "agent/linux/RouteNetlink.h"
#include "agent/base/SystemError.h"

#include <cerrno>
#include <cstring>
#include <linux/rtnetlink.h>
#include <netlink/msg.h>
#include <sys/epoll.h>
#include <sys/socket.h>

namespace Agent::Linux {

namespace {

constexpr int dropBatch = 16;

struct LinkRequest {
    nlmsghdr header{};
    ifinfomsg info{};
    // Counters are most of a link's listing and nobody reads them.
    nlattr filter{sizeof(nlattr) + sizeof(std::uint32_t), IFLA_EXT_MASK};
    std::uint32_t mask = RTEXT_FILTER_SKIP_STATS;
};

struct AddressRequest {
    nlmsghdr header{};
    ifaddrmsg info{};
};

void watch(const FileDescriptor& poll, const NetlinkSocket& socket) {
    epoll_event event{};
    event.events = EPOLLIN;
    if (::epoll_ctl(poll.get(), EPOLL_CTL_ADD, socket.fd(), &event) != 0) {
        throw SystemError("cannot watch a route netlink socket", errno);
    }
}

template <class Request>
bool sendRequest(NetlinkSocket& socket, Request& request, int type, int flags,
                 std::uint32_t sequence) {
    request.header.nlmsg_len = sizeof request;
    request.header.nlmsg_type = static_cast<std::uint16_t>(type);
    request.header.nlmsg_flags = static_cast<std::uint16_t>(NLM_F_REQUEST | flags);
    request.header.nlmsg_seq = sequence;
    return socket.send(std::as_bytes(std::span(&request, 1)));
}

/// The error a message of type NLMSG_ERROR or NLMSG_DONE ends a listing with, 0 if none.
int errorOf(const nlmsghdr& header) {
    int error = 0;
    if (header.nlmsg_len >= NLMSG_HDRLEN + sizeof error) {
        std::memcpy(&error, reinterpret_cast<const std::byte*>(&header) + NLMSG_HDRLEN,
                    sizeof error);
    }
    return error < 0 ? -error : 0;
}

} // namespace

RouteNetlink::RouteNetlink(const Options& options)
    : netns_(options.netns ? NetworkNamespace(*options.netns) : NetworkNamespace()),
      poll_(::epoll_create1(EPOLL_CLOEXEC)) {
    if (!poll_) {
        throw SystemError("cannot watch route netlink", errno);
    }
    netns_.run([&] { announcements_.emplace(); });
    announcements_->resizeBuffer(options.receiveBuffer);
    announcements_->subscribe(RTNLGRP_LINK);
    if (options.ipv4) {
        announcements_->subscribe(RTNLGRP_IPV4_IFADDR);
    }
    if (options.ipv6) {
        announcements_->subscribe(RTNLGRP_IPV6_IFADDR);
    }
    watch(poll_, *announcements_);
    openListingSocket();
}

RouteNetlink::Announcements RouteNetlink::readAnnouncements(std::vector<RouteMessage>& messages,
                                                            std::size_t limit) {
    for (std::size_t i = 0; i < limit; ++i) {
        switch (announcements_->receive()) {
        case NetlinkSocket::Reading::Empty:
            return Announcements::Drained;
        case NetlinkSocket::Reading::Lost:
            return Announcements::Lost;
        case NetlinkSocket::Reading::Data:
            announcements_->forEachMessage([&](const nlmsghdr& header) {
                if (auto message = parseRouteMessage(header)) {
                    messages.push_back(std::move(*message));
                }
            });
        }
    }
    return Announcements::More;
}

bool RouteNetlink::beginListing(const ListingRequest& request) {
    // After a failure the kernel may hold an unfinished listing that nothing would ever end.
    if (!listings_ && !reopenListingSocket()) {
        return false;
    }
    request_ = request;
    ++sequence_;
    interrupted_ = false;
    lost_ = false;
    bool sent = false;
    if (request.family == AF_UNSPEC) {
        LinkRequest message;
        message.info.ifi_index = request.index;
        int flags = request.index == 0 ? NLM_F_DUMP : NLM_F_ACK;
        sent = sendRequest(*listings_, message, RTM_GETLINK, flags, sequence_);
    } else {
        AddressRequest message;
        message.info.ifa_family = static_cast<std::uint8_t>(request.family);
        message.info.ifa_index = static_cast<std::uint32_t>(request.index);
        sent = sendRequest(*listings_, message, RTM_GETADDR, NLM_F_DUMP, sequence_);
    }
    if (!sent) {
        fail(SystemError("cannot ask for links and addresses", errno).what());
    }
    return sent;
}

RouteNetlink::Progress RouteNetlink::readListing(std::vector<RouteMessage>& messages) {
    switch (listings_->receive()) {
    case NetlinkSocket::Reading::Empty:
        if (!lost_) {
            return Progress::Waiting;
        }
        // The kernel goes on with a listing only when a part of it is read: this one is stuck.
        fail("a listing of links and addresses was lost");
        return Progress::Failed;
    case NetlinkSocket::Reading::Lost:
        lost_ = true;
        return Progress::More;
    case NetlinkSocket::Reading::Data:
        break;
    }
    std::optional<Progress> end;
    listings_->forEachMessage([&](const nlmsghdr& header) {
        if (header.nlmsg_seq == sequence_ && !end) {
            end = takeListed(header, messages);
        }
    });
    if (end == Progress::Failed) {
        listings_.reset();
    }
    return end.value_or(Progress::More);
}

void RouteNetlink::dropUnasked() {
    for (int i = 0; listings_ && i < dropBatch; ++i) {
        if (listings_->receive() == NetlinkSocket::Reading::Empty) {
            return;
        }
    }
}

void RouteNetlink::openListingSocket() {
    netns_.run([&] { listings_.emplace(); });
    strict_ = listings_->checkStrictly();
    watch(poll_, *listings_);
}

bool RouteNetlink::reopenListingSocket() {
    try {
        openListingSocket();
        return true;
    } catch (const SystemError& error) {
        fail(error.what());
        return false;
    }
}

void RouteNetlink::fail(std::string why) {
    failure_ = std::move(why);
    listings_.reset();
}

std::optional<RouteNetlink::Progress>
RouteNetlink::takeListed(const nlmsghdr& header, std::vector<RouteMessage>& messages) {
    interrupted_ = interrupted_ || (header.nlmsg_flags & NLM_F_DUMP_INTR) != 0;
    if (header.nlmsg_type == NLMSG_DONE || header.nlmsg_type == NLMSG_ERROR) {
        return finish(errorOf(header));
    }
    auto message = parseRouteMessage(header);
    if (!message) {
        return std::nullopt;
    }
    // A family the kernel lacks is answered with the addresses of all others.
    const int family = std::visit([](const auto& known) { return known.family; }, *message);
    if (family == request_.family) {
        messages.push_back(std::move(*message));
    }
    return std::nullopt;
}

RouteNetlink::Progress RouteNetlink::finish(int error) {
    switch (error) {
    case 0:
        return interrupted_ || lost_ ? Progress::Interrupted : Progress::Complete;
    case ENODEV:
    case EAFNOSUPPORT:
    case EOPNOTSUPP:
        return Progress::Absent;
    default:
        failure_ = SystemError("cannot list links and addresses", error).what();
        return Progress::Failed;
    }
}

} // namespace Agent::Linux
