#pragma once

#include "platform/orb/attribute/Declare.h"

namespace Arp {

/// Tells the platform's ARP agent that virtual IPs are served as receive routes, so that it need
/// not install them itself.
class VirtualIpAsReceiveRoute : public Orb::Entity {
    ORB_ENTITY(VirtualIpAsReceiveRoute, "Arp::VirtualIpAsReceiveRoute")
    ORB_ATTRIBUTE(258, bool, enabled)
};

} // namespace Arp
