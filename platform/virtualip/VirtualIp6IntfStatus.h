#pragma once

#include <utility>

#include "platform/lanx/IntfId.h"
#include "platform/orb/attribute/Declare.h"
#include "platform/virtualip/VrfIpPair.h"

namespace VirtualIp {

/// One IPv6 virtual address and the interfaces that carry it.
class VirtualIp6IntfStatus : public Orb::Entity {
    ORB_ENTITY(VirtualIp6IntfStatus, "VirtualIp::VirtualIp6IntfStatus")
    ORB_CONSTRUCTOR((VrfIpPair, vrfIp))
    ORB_KEY(VrfIpPair, vrfIp)
    ORB_MAP(259, Lanx::IntfId, bool, intfId)

  public:
    explicit VirtualIp6IntfStatus(Arguments arguments) : arguments_(std::move(arguments)) {}
};

} // namespace VirtualIp
