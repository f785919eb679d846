#pragma once

#include "directnet/model/Traits.h"
#include "platform/virtualip/VirtualIp6Status.h"
#include "platform/virtualip/VirtualIpStatus.h"

namespace Routing::DirectNet {

/// What distinguishes the virtual addresses of the two families: an IPv4 address comes with a mask,
/// an IPv6 one stands for itself and never yields a subnet.
template <typename Family>
struct VirtualIpTraits;

template <>
struct VirtualIpTraits<Traits::IPv4> {
    using Key = VirtualIp::VrfIpWithMaskPair;
    using IntfStatus = VirtualIp::VirtualIpIntfStatus;
    static constexpr bool hasSubnets = true;

    static Lanx::IpAddrWithMask addrWithMask(const Key& key) { return key.ipAddrWithMask(); }
    static const auto& collection(const VirtualIp::VirtualIpStatus& status) {
        return status.virtualIpIntfStatus();
    }
};

template <>
struct VirtualIpTraits<Traits::IPv6> {
    using Key = VirtualIp::VrfIpPair;
    using IntfStatus = VirtualIp::VirtualIp6IntfStatus;
    static constexpr bool hasSubnets = false;

    static Lanx::Ip6AddrWithMask addrWithMask(const Key& key) {
        return {key.ipAddr(), Lanx::Ip6Addr::bits};
    }
    static const auto& collection(const VirtualIp::VirtualIp6Status& status) {
        return status.virtualIp6IntfStatus();
    }
};

} // namespace Routing::DirectNet
