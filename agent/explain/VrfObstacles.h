#pragma once

#include <map>
#include <string>

#include "agent/topics/AgentView.h"
#include "platform/vrf/VrfName.h"

namespace Agent {

/// Every VRF that anything is known of, with what keeps it from being up; empty for one that is.
using VrfObstacles = std::map<L3::VrfName, std::string>;

VrfObstacles vrfObstacles(const AgentView& view);

} // namespace Agent
