#pragma once

#include <cstdint>
#include <ostream>

namespace Routing::Fib {

/// What a route is for. Printed as its number.
enum class RouteType : std::uint8_t {
    unset = 0,
    receive = 1,               ///< an own address inside a subnet, a virtual or a leaked address
    attachedHost = 2,          ///< an own address that is a subnet by itself
    receiveBroadcast = 3,      ///< a network address, or a broadcast address that is forwarded to
    dropDirectedBroadcast = 4, ///< a broadcast address that is not forwarded to
    connected = 11,            ///< a subnet
};

inline std::ostream& operator<<(std::ostream& out, RouteType type) {
    return out << static_cast<unsigned>(type);
}

} // namespace Routing::Fib
