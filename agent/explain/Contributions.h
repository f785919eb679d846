#pragma once

#include <set>
#include <vector>

#include "agent/explain/IntfRows.h"
#include "agent/topics/AgentView.h"
#include "platform/vrf/VrfName.h"

namespace Agent {

/// An address of an interface in a VRF.
struct IntfAddress {
    Lanx::IntfId intf;
    Lanx::IpGenAddrWithMask address;
    bool isVirtual = false;
};

/// All prefixes that an address touches, and can contribute to.
std::set<Lanx::IpGenPrefix> prefixesAround(const Lanx::IpGenAddrWithMask& address);

/// What an address contributes in its VRF and, where that is leaked, in others; nothing of a VRF
/// that is not up.
std::vector<ContributionRow> contributionsOf(const AgentView& view, const L3::VrfName& vrf,
                                             const IntfAddress& address);

} // namespace Agent
