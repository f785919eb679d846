#pragma once

#include <span>
#include <string_view>

#include "agent/topics/RouteFilter.h"
#include "agent/topics/Topic.h"

namespace Agent {

/// Everything that a running agent can show. The first is shown where none is named.
std::span<const Topic* const> topics();

/// The first of them.
inline const Topic& routesTopic() { return *topics().front(); }
/// Its answer, for some of the routes only.
std::unique_ptr<Answer> answerRoutes(const AgentView& view, const std::optional<L3::VrfName>& vrf,
                                     const RouteFilter& filter);

/// Null if there is none of that name.
const Topic* findTopic(std::string_view name);

/// The topic that a change of the trace is answered with.
extern const Topic traceTopic;

} // namespace Agent
