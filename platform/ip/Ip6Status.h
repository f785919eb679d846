#pragma once

#include "platform/ip/VrfIp6IntfStatus.h"
#include "platform/orb/attribute/Declare.h"

namespace Ip6 {

/// IPv6 on this device, by VRF.
class Status : public Orb::Entity {
    ORB_ENTITY(Status, "Ip6::Status")
    ORB_CHILDREN(258, VrfIp6IntfStatus, vrfIp6IntfStatus)
};

} // namespace Ip6
