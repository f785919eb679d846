#pragma once

#include <utility>

#include "platform/ip/Ip6AddressInfo.h"
#include "platform/lanx/AddrWithMask.h"
#include "platform/lanx/IntfId.h"
#include "platform/orb/attribute/Declare.h"

namespace Ip6 {

/// The IPv6 addresses of one interface.
class IntfStatus : public Orb::Entity {
    ORB_ENTITY(IntfStatus, "Ip6::IntfStatus")
    ORB_CONSTRUCTOR((Lanx::IntfId, intfId))
    ORB_KEY(Lanx::IntfId, intfId)
    ORB_ORDERED_MAP(259, Lanx::Ip6AddrWithMask, AddressInfo, addr)

  public:
    explicit IntfStatus(Arguments arguments) : arguments_(std::move(arguments)) {}
};

} // namespace Ip6
