#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/vrf/VrfName.h"

namespace Agent {

/// What a client asks of a running agent, in one line of JSON:
/// {"show":"routes","vrf":"red"} with the topics routes, vrfs, vips, leaks, backlog and trace;
/// {"watch":true}; {"trace":LEVEL} with LEVEL from -1 (off) to 9.
struct Request {
    enum class Kind { routes, vrfs, vips, leaks, backlog, trace, watch, setTrace };

    /// Bytes of a request, its line end included.
    static constexpr std::size_t maxLength = 4096;

    Kind kind = Kind::routes;
    std::optional<L3::VrfName> vrf; // for topics that go by VRF
    int traceLevel = -1;            // of setTrace
};

/// Throws DocumentError.
Request readRequest(std::string_view line);

} // namespace Agent
