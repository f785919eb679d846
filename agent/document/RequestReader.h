#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/lanx/IntfId.h"
#include "platform/lanx/IpGenPrefix.h"
#include "platform/vrf/VrfName.h"

namespace Agent {

/// What somebody asks a running agent: to show a topic, to watch, to set the trace, to read its
/// configuration again, or to tell when VRFs are ready, which is exactly one of these.
struct RequestDocument {
    std::optional<std::string> topic;
    std::optional<int> traceLevel; ///< -1 to 9
    bool reload = false;
    std::optional<std::vector<L3::VrfName>> waitedFor;
    std::optional<L3::VrfName> vrf;
    std::optional<Lanx::IpGenPrefix> prefix; ///< of routes that are shown or watched
    std::optional<Lanx::IntfId> intf;        ///< of routes that are shown
};

/// Reads a request, a JSON object. Throws DocumentError.
RequestDocument readRequestDocument(std::string_view line);

} // namespace Agent
