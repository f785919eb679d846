#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/lanx/NamespaceName.h"
#include "platform/vrf/VrfName.h"

namespace Agent {

/// A VRF that stands for a named network namespace while there is one of that name.
struct VrfOption {
    L3::VrfName vrf;
    Lanx::NamespaceName netns;
};

/// Reads options of the form NAME=NETNS. Throws BadInputError for one that is not, for a name or
/// namespace given twice, and for "default", which is the VRF of the namespace that the agent runs
/// in.
std::vector<VrfOption> readVrfOptions(const std::vector<std::string>& texts);

} // namespace Agent
