#pragma once

#include <set>

#include "agent/patch/DevicePatch.h"

namespace Agent {

/// The VRFs that a configuration names anywhere.
std::set<L3::VrfName> vrfsNamedBy(const DevicePatch& config);

} // namespace Agent
