#pragma once

#include <vector>

#include "agent/topics/ConfigChangeRow.h"
#include "agent/topics/StatusRows.h"
#include "platform/vrf/VrfName.h"

namespace Agent {

/// What can be asked of a running agent but the state of its library.
class AgentControl {
  public:
    virtual ~AgentControl() = default;

    virtual AgentStatusRow status() const = 0;

    /// Reads the configuration again and applies what is different. Throws FailureError, with
    /// nothing changed, saying why it could not.
    virtual std::vector<ConfigChangeRow> reload() = 0;

    /// Whether what was changed so far has become routes.
    virtual bool isQuiet() const = 0;

    /// Which of these VRFs are not ready; of none, which the agent waits for before it calls itself
    /// ready.
    virtual std::vector<L3::VrfName> notReady(const std::vector<L3::VrfName>& vrfs) const = 0;
};

} // namespace Agent
