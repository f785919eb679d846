#pragma once

#include <utility>

#include "platform/lanx/IntfId.h"
#include "platform/orb/attribute/Declare.h"
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

} // namespace VirtualIp
