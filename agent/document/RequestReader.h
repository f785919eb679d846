#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/vrf/VrfName.h"

namespace Agent {

/// What somebody asks a running agent: to show a topic, to explain something, to watch, or to set
/// the trace, which is exactly one of these.
struct RequestDocument {
    std::optional<std::string> topic;
    std::optional<std::string> explain;
    std::optional<int> traceLevel; ///< -1 to 9
    std::optional<L3::VrfName> vrf;
};

/// Reads a request, a JSON object. Throws DocumentError.
RequestDocument readRequestDocument(std::string_view line);

} // namespace Agent
