#pragma once

#include <utility>

#include "directnet/virtualip/AllVrfVirtualIpStatus.h"
#include "platform/ip/AllVrfStatusLocal.h"
#include "platform/ip/VrfStatusLocal.h"
#include "platform/vrf/NameToIdMap.h"
#include "platform/vrf/NameToIdMapWrapper.h"

namespace Routing::DirectNet::Ipv4 {

/// Makes and deletes the tables of IPv4 virtual addresses: one comes with the VRF's container or
/// its first virtual address, whichever is first, and goes with whichever is last.
class VrfVirtualIpStatusHelper : public Orb::Entity {
    ORB_ENTITY(VrfVirtualIpStatusHelper, "Routing::DirectNet::Ipv4::VrfVirtualIpStatusHelper")
    ORB_CONSTRUCTOR((Orb::Ptr<AllVrfVirtualIpStatus>, allVrfVirtualIpStatus),
                    (Orb::Ptr<const Ip::AllVrfStatusLocal>, allVrfStatusLocal),
                    (Orb::Ptr<const Vrf::VrfIdMap::NameToIdMapWrapper>, nameToIdMapWrapper))

  public:
    explicit VrfVirtualIpStatusHelper(Arguments arguments) : arguments_(std::move(arguments)) {}

    Orb::Ptr<VrfVirtualIpStatus> findOrCreateVrfVirtualIpStatus(const L3::VrfName& vrfName);

    /// Deletes the VRF's table if it is empty and no container can need it. A VRF without a table
    /// is fine.
    void maybeDeleteVrfVirtualIpStatus(const L3::VrfName& vrfName);
};

} // namespace Routing::DirectNet::Ipv4

namespace Routing::DirectNet::Ipv6 {

/// Makes and deletes the tables of IPv6 virtual addresses: one comes with the VRF's container or
/// its first virtual address, whichever is first, and goes with whichever is last.
class VrfVirtualIpStatusHelper : public Orb::Entity {
    ORB_ENTITY(VrfVirtualIpStatusHelper, "Routing::DirectNet::Ipv6::VrfVirtualIpStatusHelper")
    ORB_CONSTRUCTOR((Orb::Ptr<AllVrfVirtualIpStatus>, allVrfVirtualIpStatus),
                    (Orb::Ptr<const Ip::AllVrfStatusLocal>, allVrfStatusLocal),
                    (Orb::Ptr<const Vrf::VrfIdMap::NameToIdMapWrapper>, nameToIdMapWrapper))

  public:
    explicit VrfVirtualIpStatusHelper(Arguments arguments) : arguments_(std::move(arguments)) {}

    Orb::Ptr<VrfVirtualIpStatus> findOrCreateVrfVirtualIpStatus(const L3::VrfName& vrfName);

    /// Deletes the VRF's table if it is empty and no container can need it. A VRF without a table
    /// is fine.
    void maybeDeleteVrfVirtualIpStatus(const L3::VrfName& vrfName);
};

} // namespace Routing::DirectNet::Ipv6
