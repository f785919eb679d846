#pragma once

#include "platform/lanx/AddrWithMask.h"
#include "platform/lanx/AddressFamily.h"

/// What distinguishes the two address families where the logic is one.
namespace Routing::DirectNet::Traits {

struct IPv4 {
    using AddrWithMask = Lanx::IpAddrWithMask;
    static constexpr Lanx::AddressFamily af = Lanx::AddressFamily::ipv4;
    static constexpr unsigned hostLen = 32;
    static constexpr bool hasBroadcasts = true;
    static constexpr const char* version = "v4";
};

struct IPv6 {
    using AddrWithMask = Lanx::Ip6AddrWithMask;
    static constexpr Lanx::AddressFamily af = Lanx::AddressFamily::ipv6;
    static constexpr unsigned hostLen = 128;
    static constexpr bool hasBroadcasts = false;
    static constexpr const char* version = "v6";
};

} // namespace Routing::DirectNet::Traits
