#include "agent/linux/RouteMessage.h"

namespace Agent::Linux {

std::optional<RouteMessage> parseRouteMessage(const nlmsghdr& header) {
    if (auto link = LinkMessage::parse(header)) {
        return *std::move(link);
    }
    if (const auto address = Ipv4AddressMessage::parse(header)) {
        return *address;
    }
    if (const auto address = Ipv6AddressMessage::parse(header)) {
        return *address;
    }
    return std::nullopt;
}

} // namespace Agent::Linux
