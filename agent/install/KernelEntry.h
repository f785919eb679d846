#pragma once

#include <compare>
#include <cstdint>

#include "platform/lanx/IntfId.h"
#include "platform/lanx/IpGenPrefix.h"

namespace Agent {

/// A route in one of a kernel's tables, or a proxy neighbour: an IPv6 address for which a link
/// answers neighbour solicitations. As the kernel has it, so the link is an index.
struct KernelEntry {
    bool isProxy = false;
    std::uint8_t type = 0;  ///< RTN_* of a route
    std::uint8_t scope = 0; ///< RT_SCOPE_* of an IPv4 route
    int link = 0;           ///< 0 for a route that goes through none, or through several
    std::uint32_t table = 0;
    std::uint32_t metric = 0;
    Lanx::IpGenPrefix prefix;

    friend bool operator==(const KernelEntry&, const KernelEntry&) = default;
};

/// A place in a kernel that the agent puts one entry into: a prefix in a table, or an address on a
/// link for proxy neighbours.
struct KernelSlot {
    Lanx::IpGenPrefix prefix;
    std::uint32_t table = 0; ///< for a proxy neighbour that of the VRF device its link is in, or 0
    Lanx::IntfId proxyLink;  ///< the empty one for a route

    bool isProxy() const { return !!proxyLink; }

    std::uint64_t hash(std::uint64_t seed) const {
        Orb::Hasher hasher(seed);
        hasher.mixValue(prefix);
        hasher.mix(table);
        hasher.mixValue(proxyLink);
        return hasher.result();
    }
    friend bool operator==(const KernelSlot&, const KernelSlot&) = default;
};

} // namespace Agent
