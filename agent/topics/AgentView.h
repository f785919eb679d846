#pragma once

namespace Orb {
class Clock;
}
namespace Routing::DirectNet {
class RootSm;
}

namespace Agent {

class AgentControl;
class DeviceInputs;
class KernelWords;
class VrfCatalog;

/// What the walks of a running agent read. Refers to objects that outlive it.
struct AgentView {
    const Routing::DirectNet::RootSm& root;
    const DeviceInputs& inputs;
    const Orb::Clock& clock;
    const VrfCatalog* catalog = nullptr; ///< of an agent that others can ask
    const KernelWords* kernel = nullptr; ///< null where the agent installs nothing
    AgentControl* control = nullptr;     ///< of an agent that others can ask
};

} // namespace Agent
