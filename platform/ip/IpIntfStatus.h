#pragma once

#include <utility>

#include "platform/lanx/AddrWithMask.h"
#include "platform/lanx/IntfId.h"
#include "platform/orb/attribute/Declare.h"

namespace Ip {

/// The IPv4 addresses that are active on one interface. An address never has two roles at once:
/// whoever publishes a change sets the unnumbered source and the directed-broadcast flag first,
/// then takes secondaries away, then sets the primary, then adds secondaries.
class IpIntfStatus : public Orb::Entity {
    ORB_ENTITY(IpIntfStatus, "Ip::IpIntfStatus")
    ORB_CONSTRUCTOR((Lanx::IntfId, intfId))
    ORB_KEY(Lanx::IntfId, intfId)
    /// The primary address; 0.0.0.0/0 where there is none.
    ORB_ATTRIBUTE(259, Lanx::IpAddrWithMask, activeAddrWithMask)
    /// The secondary addresses; one with false is listed but not in use.
    ORB_ORDERED_MAP(260, Lanx::IpAddrWithMask, bool, activeSecondaryWithMask)
    /// The interface that the primary address is borrowed from; empty on a numbered interface.
    ORB_ATTRIBUTE(261, Lanx::IntfId, unnumberedIntfId)
    /// Whether packets to the subnet's broadcast address are forwarded as broadcasts.
    ORB_ATTRIBUTE(262, bool, directedBroadcast)

  public:
    explicit IpIntfStatus(Arguments arguments) : arguments_(std::move(arguments)) {}
};

} // namespace Ip
