#pragma once

#include <span>
#include <string_view>

#include "agent/topics/Topic.h"

namespace Agent {

/// Everything that a running agent can show. The first is shown where none is named.
std::span<const Topic* const> topics();

/// Null if there is none of that name.
const Topic* findTopic(std::string_view name);

/// The topic that a change of the trace is answered with.
extern const Topic traceTopic;

} // namespace Agent
