#pragma once

#include <cstdint>

#include "agent/topics/AgentView.h"
#include "platform/lanx/IntfId.h"
#include "platform/routing/RouteKey.h"
#include "platform/vrf/VrfName.h"

namespace Agent {

/// What a route of the agent's has to do with the kernel.
struct RouteUse {
    enum class Kind : std::uint8_t {
        none,           ///< the kernel makes it by itself, or needs it not
        virtualAddress, ///< an address that the interface carries, and does not have
        virtualSubnet,  ///< the IPv4 subnet of such an address, and of no other of the interface
        leaked,         ///< an address of another VRF
    };

    Kind kind = Kind::none;
    Lanx::IntfId interface;
    L3::VrfName source;             ///< of a leaked route; the empty name if no VRF has the id
    bool isVirtualInSource = false; ///< of a leaked route: a virtual address

    friend bool operator==(const RouteUse&, const RouteUse&) = default;
};

/// Decides by the route of that key, which is that of the prefix's first contributor, and by all
/// contributors of the prefix.
RouteUse useOf(const AgentView& view, const Routing::Rib::RouteKey& key);

} // namespace Agent
