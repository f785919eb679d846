#pragma once

#include "agent/device/DeviceInputs.h"
#include "directnet/root/RootSm.h"

namespace Agent {

/// What of a running agent can be asked about. Refers to things that outlive it.
struct AgentView {
    const Routing::DirectNet::RootSm& root;
    const DeviceInputs& inputs;
    const Orb::Clock& clock;
};

} // namespace Agent
