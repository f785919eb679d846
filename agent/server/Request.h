#pragma once

#include <optional>
#include <string_view>

#include "agent/explain/ExplainTarget.h"
#include "agent/topics/Topic.h"
#include "platform/vrf/VrfName.h"

namespace Agent {

/// What a client asks of a running agent, in one line of JSON: {"show":TOPIC,"vrf":"red"} with one
/// of topics(), {"explain":TEXT,"vrf":"red"}, {"watch":true} or {"trace":LEVEL} with LEVEL from -1
/// (off) to 9.
struct Request {
    /// Bytes of a request, its line end included.
    static constexpr std::size_t maxLength = 4096;

    const Topic* topic = nullptr;         // what is to be shown; null to watch or to explain
    std::optional<ExplainTarget> explain; // what is to be explained
    std::optional<L3::VrfName> vrf;       // nothing for all
    std::optional<int> traceLevel;        // to be set first

    bool isWatch() const { return topic == nullptr && !explain; }
};

/// Throws DocumentError.
Request readRequest(std::string_view line);

} // namespace Agent
