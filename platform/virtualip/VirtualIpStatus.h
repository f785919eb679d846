#pragma once

#include <utility>

#include "platform/lanx/IntfId.h"
#include "platform/orb/Declare.h"
#include "platform/virtualip/VrfIpPair.h"
#include "platform/virtualip/VrfIpWithMaskPair.h"

namespace VirtualIp {

/// One IPv4 virtual address and the interfaces that carry it.
class VirtualIpIntfStatus : public Orb::Entity {
    ORB_ENTITY(VirtualIpIntfStatus, "VirtualIp::VirtualIpIntfStatus")
    ORB_CONSTRUCTOR((VrfIpWithMaskPair, vrfIpWithMask))
    ORB_KEY(VrfIpWithMaskPair, vrfIpWithMask)
    ORB_MAP(259, Lanx::IntfId, bool, intfId)

  public:
    explicit VirtualIpIntfStatus(Arguments arguments) : arguments_(std::move(arguments)) {}
};

/// The IPv4 virtual addresses of all VRFs.
class VirtualIpStatus : public Orb::Entity {
    ORB_ENTITY(VirtualIpStatus, "VirtualIp::VirtualIpStatus")
    ORB_CHILDREN(258, VirtualIpIntfStatus, virtualIpIntfStatus)
    /// Whether the subnets of virtual addresses are routes as well.
    ORB_ATTRIBUTE(259, bool, subnetRoutes)
};

/// One IPv6 virtual address and the interfaces that carry it.
class VirtualIp6IntfStatus : public Orb::Entity {
    ORB_ENTITY(VirtualIp6IntfStatus, "VirtualIp::VirtualIp6IntfStatus")
    ORB_CONSTRUCTOR((VrfIpPair, vrfIp))
    ORB_KEY(VrfIpPair, vrfIp)
    ORB_MAP(259, Lanx::IntfId, bool, intfId)

  public:
    explicit VirtualIp6IntfStatus(Arguments arguments) : arguments_(std::move(arguments)) {}
};

/// The IPv6 virtual addresses of all VRFs.
class VirtualIp6Status : public Orb::Entity {
    ORB_ENTITY(VirtualIp6Status, "VirtualIp::VirtualIp6Status")
    ORB_CHILDREN(258, VirtualIp6IntfStatus, virtualIp6IntfStatus)
};

} // namespace VirtualIp
