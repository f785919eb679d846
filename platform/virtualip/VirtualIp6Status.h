#pragma once

#include "platform/orb/attribute/Declare.h"
#include "platform/virtualip/VirtualIp6IntfStatus.h"

namespace VirtualIp {

/// The IPv6 virtual addresses of all VRFs.
class VirtualIp6Status : public Orb::Entity {
    ORB_ENTITY(VirtualIp6Status, "VirtualIp::VirtualIp6Status")
    ORB_CHILDREN(258, VirtualIp6IntfStatus, virtualIp6IntfStatus)
};

} // namespace VirtualIp
