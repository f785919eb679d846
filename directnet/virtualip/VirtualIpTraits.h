#pragma once

#include <string_view>

#include "directnet/model/Traits.h"
#include "platform/virtualip/VirtualIp6Status.h"
#include "platform/virtualip/VirtualIpStatus.h"

namespace Routing::DirectNet {

/// What distinguishes the virtual addresses of the two families: an IPv4 address comes with a mask,
/// an IPv6 one stands for itself and never yields a subnet. And what their classes are called.
template <typename Family>
struct VirtualIpTraits;

template <>
struct VirtualIpTraits<Traits::IPv4> {
    using Status = VirtualIp::VirtualIpStatus;
    using IntfStatus = VirtualIp::VirtualIpIntfStatus;
    using Key = VirtualIp::VrfIpWithMaskPair;
    static constexpr bool hasSubnets = true;
    static constexpr Orb::AttributeId collectionAttribute = Status::virtualIpIntfStatusAttribute;

    static constexpr std::string_view tableName = "Routing::DirectNet::Ipv4::VrfVirtualIpStatus";
    static constexpr std::string_view tablesName =
        "Routing::DirectNet::Ipv4::AllVrfVirtualIpStatus";
    static constexpr std::string_view helperName =
        "Routing::DirectNet::Ipv4::VrfVirtualIpStatusHelper";
    static constexpr std::string_view machineName =
        "Routing::DirectNet::Ipv4::VrfVirtualIpStatusSm";

    static Lanx::IpAddrWithMask addrWithMask(const Key& key) { return key.ipAddrWithMask(); }
    static const auto& collection(const Status& status) { return status.virtualIpIntfStatus(); }
};

template <>
struct VirtualIpTraits<Traits::IPv6> {
    using Status = VirtualIp::VirtualIp6Status;
    using IntfStatus = VirtualIp::VirtualIp6IntfStatus;
    using Key = VirtualIp::VrfIpPair;
    static constexpr bool hasSubnets = false;
    static constexpr Orb::AttributeId collectionAttribute = Status::virtualIp6IntfStatusAttribute;

    static constexpr std::string_view tableName = "Routing::DirectNet::Ipv6::VrfVirtualIpStatus";
    static constexpr std::string_view tablesName =
        "Routing::DirectNet::Ipv6::AllVrfVirtualIpStatus";
    static constexpr std::string_view helperName =
        "Routing::DirectNet::Ipv6::VrfVirtualIpStatusHelper";
    static constexpr std::string_view machineName =
        "Routing::DirectNet::Ipv6::VrfVirtualIpStatusSm";

    static Lanx::Ip6AddrWithMask addrWithMask(const Key& key) {
        return {key.ipAddr(), Lanx::Ip6Addr::bits};
    }
    static const auto& collection(const Status& status) { return status.virtualIp6IntfStatus(); }
};

} // namespace Routing::DirectNet
