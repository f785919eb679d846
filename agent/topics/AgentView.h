#pragma once

namespace Orb {
class Clock;
}
namespace Routing::DirectNet {
class RootSm;
}

namespace Agent {

class DeviceInputs;

/// The agent, as whoever shows its state sees it. Refers to things that outlive it.
struct AgentView {
    const Routing::DirectNet::RootSm& root;
    const DeviceInputs& inputs;
    const Orb::Clock& clock;
};

} // namespace Agent
