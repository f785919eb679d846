#pragma once

#include <utility>

#include "directnet/model/Units.h"
#include "directnet/virtualip/VirtualIpTraits.h"
#include "platform/orb/attribute/Declare.h"
#include "platform/vrf/VrfName.h"

namespace Routing::DirectNet {

/// The virtual addresses of one VRF in one family. The table only refers to the platform's objects,
/// each of which knows its own key; it neither owns nor changes them. Whatever happens to it is
/// streamed to readers in other processes.
template <typename Family>
class VrfVirtualIpStatus : public Orb::Entity {
    using Virtual = VirtualIpTraits<Family>;

    ORB_ENTITY(VrfVirtualIpStatus, Virtual::tableName)
    ORB_CONSTRUCTOR((L3::VrfName, name))
    ORB_KEY(L3::VrfName, name)
    ORB_REFERENCES(259, const typename Virtual::IntfStatus, virtualIp)
    /// Whether the subnets of the addresses are routes as well; never in IPv6.
    ORB_ATTRIBUTE(260, bool, subnetRouteEnabled)

  public:
    explicit VrfVirtualIpStatus(Arguments arguments) : arguments_(std::move(arguments)) {}
};

namespace Ipv4 {
using VrfVirtualIpStatus = DirectNet::VrfVirtualIpStatus<Traits::IPv4>;
}
namespace Ipv6 {
using VrfVirtualIpStatus = DirectNet::VrfVirtualIpStatus<Traits::IPv6>;
}

extern template class VrfVirtualIpStatus<Traits::IPv4>;
extern template class VrfVirtualIpStatus<Traits::IPv6>;

} // namespace Routing::DirectNet
