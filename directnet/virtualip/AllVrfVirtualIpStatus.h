#pragma once

#include "directnet/virtualip/VrfVirtualIpStatus.h"

namespace Routing::DirectNet::Ipv4 {

/// The IPv4 virtual addresses of all VRFs: one table each.
class AllVrfVirtualIpStatus : public Orb::Entity {
    ORB_ENTITY(AllVrfVirtualIpStatus, "Routing::DirectNet::Ipv4::AllVrfVirtualIpStatus")
    ORB_NO_CONSTRUCTOR(AllVrfVirtualIpStatus)
    ORB_CHILDREN(258, VrfVirtualIpStatus, vrfVirtualIpStatus)
};

} // namespace Routing::DirectNet::Ipv4

namespace Routing::DirectNet::Ipv6 {

/// The IPv6 virtual addresses of all VRFs: one table each.
class AllVrfVirtualIpStatus : public Orb::Entity {
    ORB_ENTITY(AllVrfVirtualIpStatus, "Routing::DirectNet::Ipv6::AllVrfVirtualIpStatus")
    ORB_NO_CONSTRUCTOR(AllVrfVirtualIpStatus)
    ORB_CHILDREN(258, VrfVirtualIpStatus, vrfVirtualIpStatus)
};

} // namespace Routing::DirectNet::Ipv6
