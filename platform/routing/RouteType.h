#pragma once

#include <cstdint>
#include <ostream>

namespace Routing::Fib {

/// What a route is for, as a number of which the tables know nothing; 0 is none. Whoever configures
/// routes says what the numbers mean, see directnet/backlog/RouteKinds.h.
enum class RouteType : std::uint8_t;

/// Printed as its number.
inline std::ostream& operator<<(std::ostream& out, RouteType type) {
    return out << static_cast<unsigned>(type);
}

} // namespace Routing::Fib
