#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "agent/topics/RouteFilter.h"
#include "agent/topics/Topic.h"
#include "platform/vrf/VrfName.h"

namespace Agent {

/// What a client asks of a running agent, in one line of JSON: {"show":TOPIC,"vrf":"red"} with one
/// of topics(), for routes also with "prefix" and "intf", {"watch":true} with "vrf" and "prefix",
/// {"trace":LEVEL} with LEVEL from -1 (off) to 9, {"reload":true} or
/// {"wait":["red"]}.
struct Request {
    /// Bytes of a request, its line end included.
    static constexpr std::size_t maxLength = 4096;

    const Topic* topic = nullptr; // what is to be shown
    bool isWatch = false;
    bool isReload = false;
    std::optional<std::vector<L3::VrfName>> waitedFor; // which are to be ready
    std::optional<L3::VrfName> vrf;                    // nothing for all
    RouteFilter routes;                                // of routes that are shown or watched
    std::optional<int> traceLevel;                     // to be set first
};

/// Throws DocumentError.
Request readRequest(std::string_view line);

} // namespace Agent
