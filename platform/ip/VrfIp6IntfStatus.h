#pragma once

#include <utility>

#include "platform/ip/Ip6IntfStatus.h"
#include "platform/orb/attribute/Declare.h"
#include "platform/vrf/VrfName.h"

namespace Ip6 {

/// The IPv6 interfaces of a VRF.
class VrfIp6IntfStatus : public Orb::Entity {
    ORB_ENTITY(VrfIp6IntfStatus, "Ip6::VrfIp6IntfStatus")
    ORB_CONSTRUCTOR((L3::VrfName, vrfName))
    ORB_KEY(L3::VrfName, vrfName)
    ORB_CHILDREN(259, IntfStatus, intfStatus)

  public:
    explicit VrfIp6IntfStatus(Arguments arguments) : arguments_(std::move(arguments)) {}
};

} // namespace Ip6
