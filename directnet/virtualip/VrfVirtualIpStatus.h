#pragma once

#include <utility>

#include "directnet/model/Units.h"
#include "platform/orb/attribute/Declare.h"
#include "platform/virtualip/VirtualIp6Status.h"
#include "platform/virtualip/VirtualIpStatus.h"
#include "platform/vrf/VrfName.h"

namespace Routing::DirectNet::Ipv4 {

/// The IPv4 virtual addresses of one VRF. The table only refers to the platform's objects, each of
/// which knows its own key; it neither owns nor changes them. Whatever happens to it is streamed to
/// readers in other processes.
class VrfVirtualIpStatus : public Orb::Entity {
    ORB_ENTITY(VrfVirtualIpStatus, "Routing::DirectNet::Ipv4::VrfVirtualIpStatus")
    ORB_CONSTRUCTOR((L3::VrfName, name))
    ORB_KEY(L3::VrfName, name)
    ORB_REFERENCES(259, const VirtualIp::VirtualIpIntfStatus, virtualIp)
    /// Whether the subnets of the addresses are routes as well.
    ORB_ATTRIBUTE(260, bool, subnetRouteEnabled)

  public:
    explicit VrfVirtualIpStatus(Arguments arguments) : arguments_(std::move(arguments)) {}
};

} // namespace Routing::DirectNet::Ipv4

namespace Routing::DirectNet::Ipv6 {

/// The IPv6 virtual addresses of one VRF. The table only refers to the platform's objects, each of
/// which knows its own key; it neither owns nor changes them. Whatever happens to it is streamed to
/// readers in other processes.
class VrfVirtualIpStatus : public Orb::Entity {
    ORB_ENTITY(VrfVirtualIpStatus, "Routing::DirectNet::Ipv6::VrfVirtualIpStatus")
    ORB_CONSTRUCTOR((L3::VrfName, name))
    ORB_KEY(L3::VrfName, name)
    ORB_REFERENCES(259, const VirtualIp::VirtualIp6IntfStatus, virtualIp)
    /// Always false: IPv6 virtual addresses never yield subnet routes.
    ORB_ATTRIBUTE(260, bool, subnetRouteEnabled)

  public:
    explicit VrfVirtualIpStatus(Arguments arguments) : arguments_(std::move(arguments)) {}
};

} // namespace Routing::DirectNet::Ipv6
