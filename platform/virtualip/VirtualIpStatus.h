#pragma once

#include "platform/orb/attribute/Declare.h"
#include "platform/virtualip/VirtualIpIntfStatus.h"

namespace VirtualIp {

/// The IPv4 virtual addresses of all VRFs.
class VirtualIpStatus : public Orb::Entity {
    ORB_ENTITY(VirtualIpStatus, "VirtualIp::VirtualIpStatus")
    ORB_CHILDREN(258, VirtualIpIntfStatus, virtualIpIntfStatus)
    /// Whether the subnets of virtual addresses are routes as well.
    ORB_ATTRIBUTE(259, bool, subnetRoutes)
};

} // namespace VirtualIp
