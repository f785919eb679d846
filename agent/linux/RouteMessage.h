#pragma once

#include <optional>
#include <variant>
#include <vector>

#include "agent/linux/AddressMessage.h"
#include "agent/linux/LinkMessage.h"

namespace Agent::Linux {

using RouteMessage = std::variant<LinkMessage, Ipv4AddressMessage, Ipv6AddressMessage>;

/// Reads a message that lies whole in its buffer. Nothing if it is about something else, or is
/// malformed.
std::optional<RouteMessage> parseRouteMessage(const nlmsghdr& header);

/// What listings of links and addresses show, in the kernel's order.
struct ListedLinks {
    std::vector<LinkMessage> links;
    std::vector<Ipv4AddressMessage> ipv4;
    std::vector<Ipv6AddressMessage> ipv6;

    void add(const LinkMessage& link) { links.push_back(link); }
    void add(const Ipv4AddressMessage& address) { ipv4.push_back(address); }
    void add(const Ipv6AddressMessage& address) { ipv6.push_back(address); }
};

} // namespace Agent::Linux
