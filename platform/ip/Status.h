#pragma once

#include "platform/ip/VrfIpIntfStatus.h"
#include "platform/orb/attribute/Declare.h"

namespace Ip {

/// IPv4 on this device, by VRF.
class Status : public Orb::Entity {
    ORB_ENTITY(Status, "Ip::Status")
    ORB_CHILDREN(258, VrfIpIntfStatus, vrfIpIntfStatus)
};

} // namespace Ip
