#pragma once

#include <array>
#include <cstdint>
#include <string_view>
#include <tuple>

#include "platform/lanx/IntfId.h"
#include "platform/orb/attribute/Value.h"
#include "platform/routing/RouteType.h"
#include "platform/routing/ViaKey.h"
#include "platform/routing/ViaSetKey.h"

// The kinds of routes: of which type one is, through which of its interface's via sets it goes, and
// what both are called. A new kind has its rows here, and a rule that contributes it.

/// What a route is for.
enum class Routing::Fib::RouteType : std::uint8_t {
    unset = 0,
    receive = 1,               ///< an own address inside a subnet, a virtual or a leaked address
    attachedHost = 2,          ///< an own address that is a subnet by itself
    receiveBroadcast = 3,      ///< a network address, or a broadcast address that is forwarded to
    dropDirectedBroadcast = 4, ///< a broadcast address that is not forwarded to
    connected = 11,            ///< a subnet
};

namespace Routing::DirectNet {

/// The via of an interface in one address family and the via sets made of it. Those that a family
/// does not have stay empty.
class IntfViaSetKey {
    ORB_VALUE(IntfViaSetKey, "Routing::DirectNet::IntfViaSetKey", (Lanx::IntfId, intfId),
              (Routing::Rib::ViaKey, viaKey), (Routing::Rib::ViaSetKey, viaSetKey),
              (Routing::Rib::ViaSetKey, rxViaSetKey), (Routing::Rib::ViaSetKey, rxBcastViaSetKey),
              (Routing::Rib::ViaSetKey, directedBcastViaSetKey))
};

/// One of the via sets of an interface. Readers in other processes know it by its number.
struct ViaSetKind {
    std::string_view name;
    std::uint8_t number;
    Rib::ViaSetKey (IntfViaSetKey::*key)() const;
    bool inIpv6;
};

namespace ViaSets {
inline constexpr ViaSetKind connected{"connected", 1, &IntfViaSetKey::viaSetKey, true};
inline constexpr ViaSetKind receive{"receive", 2, &IntfViaSetKey::rxViaSetKey, true};
inline constexpr ViaSetKind receiveBroadcast{"receive-broadcast", 3,
                                             &IntfViaSetKey::rxBcastViaSetKey, false};
inline constexpr ViaSetKind directedBroadcast{"directed-broadcast", 4,
                                              &IntfViaSetKey::directedBcastViaSetKey, false};

/// In the order of IntfViaSetKey, in which they are made and deleted.
inline constexpr std::array all = {connected, receive, receiveBroadcast, directedBroadcast};
} // namespace ViaSets

static_assert(IntfViaSetKey::valueFieldCount == 2 + ViaSets::all.size());

/// A kind of route.
struct RouteKind {
    Fib::RouteType type;
    const ViaSetKind& viaSet;
};

namespace RouteKinds {
using Fib::RouteType;

inline constexpr RouteKind subnet{RouteType::connected, ViaSets::connected};
/// An own address inside a subnet; a virtual or leaked address.
inline constexpr RouteKind address{RouteType::receive, ViaSets::receive};
/// An own address that is a subnet by itself.
inline constexpr RouteKind loneAddress{RouteType::attachedHost, ViaSets::receive};
inline constexpr RouteKind network{RouteType::receiveBroadcast, ViaSets::receiveBroadcast};
/// A broadcast address, by whether it is forwarded to. Both go through one via set.
inline constexpr RouteKind broadcast{RouteType::dropDirectedBroadcast, ViaSets::directedBroadcast};
inline constexpr RouteKind forwardedBroadcast{RouteType::receiveBroadcast,
                                              ViaSets::directedBroadcast};
} // namespace RouteKinds

/// What people call a type of routes; empty if it is none of them.
constexpr std::string_view routeTypeName(Fib::RouteType type) {
    switch (type) {
    case Fib::RouteType::unset:
        break;
    case Fib::RouteType::receive:
        return "receive";
    case Fib::RouteType::attachedHost:
        return "attached-host";
    case Fib::RouteType::receiveBroadcast:
        return "receive-broadcast";
    case Fib::RouteType::dropDirectedBroadcast:
        return "drop-broadcast";
    case Fib::RouteType::connected:
        return "connected";
    }
    return {};
}

/// What people call the via sets of that number; empty if there are none.
constexpr std::string_view viaSetName(std::uint8_t number) {
    for (const ViaSetKind& kind : ViaSets::all) {
        if (kind.number == number) {
            return kind.name;
        }
    }
    return {};
}

} // namespace Routing::DirectNet
