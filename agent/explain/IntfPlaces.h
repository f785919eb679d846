#pragma once

#include <vector>

#include "agent/explain/IntfSection.h"

namespace KernelNetInfo {
class Status;
}

namespace Agent {

/// The VRFs that an interface is in: those that its links and addresses are in; of one that has
/// neither, those in whose namespace it has a device.
std::vector<IntfSection::Options> placesOf(const AgentView& view, Lanx::IntfId intf);

/// Whether one of the places is that VRF, and not merely a device of its name.
bool isIn(const std::vector<IntfSection::Options>& places, const L3::VrfName& vrf);

/// What the agent was told of the devices of a network namespace; null for nothing.
const KernelNetInfo::Status* kernelDevicesOf(const AgentView& view,
                                             const Lanx::NamespaceName& netns);

} // namespace Agent
