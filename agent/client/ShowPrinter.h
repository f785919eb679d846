#pragma once

#include <ostream>

#include "agent/client/AgentConnection.h"

namespace Agent {

/// Print the answers of a running agent, for people or as JSON. Throw FailureError when the answer
/// breaks off.

/// Routes as tables or as a state document: VRF by VRF, sorted by address, then length.
void printRoutes(std::ostream& out, AgentConnection& answer, bool json);

/// VRFs as a table.
void printVrfs(std::ostream& out, AgentConnection& answer);

/// Any other topic as one table, or its lines as they are.
void printTopic(std::ostream& out, AgentConnection& answer, bool json);

} // namespace Agent
