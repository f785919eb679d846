#pragma once

#include "platform/lanx/Ip6Addr.h"
#include "platform/orb/attribute/Value.h"
#include "platform/vrf/VrfName.h"

namespace VirtualIp {

/// Names an IPv6 virtual address: its VRF and the address.
class VrfIpPair {
    ORB_VALUE(VrfIpPair, "VirtualIp::VrfIpPair", (L3::VrfName, vrfName), (Lanx::Ip6Addr, ipAddr))
};

} // namespace VirtualIp
