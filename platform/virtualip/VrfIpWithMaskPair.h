#pragma once

#include "platform/lanx/AddrWithMask.h"
#include "platform/orb/attribute/Value.h"
#include "platform/vrf/VrfName.h"

namespace VirtualIp {

/// Names an IPv4 virtual address: its VRF, and the address with its mask.
class VrfIpWithMaskPair {
    ORB_VALUE(VrfIpWithMaskPair, "VirtualIp::VrfIpWithMaskPair", (L3::VrfName, vrfName),
              (Lanx::IpAddrWithMask, ipAddrWithMask))
};

} // namespace VirtualIp
