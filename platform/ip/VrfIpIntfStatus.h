#pragma once

#include <utility>

#include "platform/ip/IpIntfStatus.h"
#include "platform/orb/attribute/Declare.h"
#include "platform/vrf/VrfName.h"

namespace Ip {

/// The IPv4 interfaces of a VRF.
class VrfIpIntfStatus : public Orb::Entity {
    ORB_ENTITY(VrfIpIntfStatus, "Ip::VrfIpIntfStatus")
    ORB_CONSTRUCTOR((L3::VrfName, vrfName))
    ORB_KEY(L3::VrfName, vrfName)
    ORB_CHILDREN(259, IpIntfStatus, ipIntfStatus)

  public:
    explicit VrfIpIntfStatus(Arguments arguments) : arguments_(std::move(arguments)) {}
};

} // namespace Ip
