#pragma once

#include <utility>

#include "directnet/virtualip/AllVrfVirtualIpStatus.h"
#include "platform/ip/AllVrfStatusLocal.h"
#include "platform/vrf/NameToIdMapWrapper.h"

namespace Routing::DirectNet {

/// Makes and deletes the tables of virtual addresses of one family: one comes with the VRF's
/// container or its first virtual address, whichever is first, and goes with whichever is last.
template <typename Family>
class VrfVirtualIpStatusHelper : public Orb::Entity {
    ORB_ENTITY(VrfVirtualIpStatusHelper, VirtualIpTraits<Family>::helperName)
    ORB_CONSTRUCTOR((Orb::Ptr<AllVrfVirtualIpStatus<Family>>, allVrfVirtualIpStatus),
                    (Orb::Ptr<const Ip::AllVrfStatusLocal>, allVrfStatusLocal),
                    (Orb::Ptr<const Vrf::VrfIdMap::NameToIdMapWrapper>, nameToIdMapWrapper,
                     Orb::mayBeNull))

  public:
    explicit VrfVirtualIpStatusHelper(Arguments arguments) : arguments_(std::move(arguments)) {}

    Orb::Ptr<VrfVirtualIpStatus<Family>> findOrCreateVrfVirtualIpStatus(const L3::VrfName& vrfName);

    /// Deletes the VRF's table if it is empty and no container can need it. A VRF without a table
    /// is fine.
    void maybeDeleteVrfVirtualIpStatus(const L3::VrfName& vrfName);
};

namespace Ipv4 {
using VrfVirtualIpStatusHelper = DirectNet::VrfVirtualIpStatusHelper<Traits::IPv4>;
}
namespace Ipv6 {
using VrfVirtualIpStatusHelper = DirectNet::VrfVirtualIpStatusHelper<Traits::IPv6>;
}

extern template class VrfVirtualIpStatusHelper<Traits::IPv4>;
extern template class VrfVirtualIpStatusHelper<Traits::IPv6>;

} // namespace Routing::DirectNet
