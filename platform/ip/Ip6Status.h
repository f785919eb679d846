#pragma once

#include <ostream>
#include <utility>

#include "platform/lanx/AddrWithMask.h"
#include "platform/lanx/IntfId.h"
#include "platform/orb/Declare.h"
#include "platform/vrf/VrfName.h"

namespace Ip6 {

/// What is known of an IPv6 address. An address whose info is the default is listed but not in use.
struct AddressInfo {
    /// Duplicate address detection is over and the address is in use.
    bool active = false;
    /// Seconds for which the address stays preferred; 0 is for ever.
    std::uint32_t preferredLifetime = 0;

    friend bool operator==(const AddressInfo&, const AddressInfo&) = default;
    friend std::ostream& operator<<(std::ostream& out, const AddressInfo& info) {
        return out << (info.active ? "active" : "inactive");
    }
};

/// The IPv6 addresses of one interface.
class IntfStatus : public Orb::Entity {
    ORB_ENTITY(IntfStatus, "Ip6::IntfStatus")
    ORB_CONSTRUCTOR((Lanx::IntfId, intfId))
    ORB_KEY(Lanx::IntfId, intfId)
    ORB_ORDERED_MAP(259, Lanx::Ip6AddrWithMask, AddressInfo, addr)

  public:
    explicit IntfStatus(Arguments arguments) : arguments_(std::move(arguments)) {}
};

/// The IPv6 interfaces of a VRF.
class VrfIp6IntfStatus : public Orb::Entity {
    ORB_ENTITY(VrfIp6IntfStatus, "Ip6::VrfIp6IntfStatus")
    ORB_CONSTRUCTOR((L3::VrfName, vrfName))
    ORB_KEY(L3::VrfName, vrfName)
    ORB_CHILDREN(259, IntfStatus, intfStatus)

  public:
    explicit VrfIp6IntfStatus(Arguments arguments) : arguments_(std::move(arguments)) {}
};

/// IPv6 on this device, by VRF.
class Status : public Orb::Entity {
    ORB_ENTITY(Status, "Ip6::Status")
    ORB_CHILDREN(258, VrfIp6IntfStatus, vrfIp6IntfStatus)
};

} // namespace Ip6
