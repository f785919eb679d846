#pragma once

#include <string>

#include "agent/topics/Row.h"

namespace Agent {

/// A prefix whose addresses one VRF leaks to another. The routes that come of it are the other's.
/// A VRF that has no name goes by its id.
struct LeakRow {
    std::string vrf;
    Lanx::IpGenPrefix prefix;
    std::string to;

    static void describe(auto& row, auto&& column) {
        column({"vrf", "VRF"}, row.vrf);
        column({"prefix", "PREFIX"}, row.prefix);
        column({"to", "TO"}, row.to);
    }
};

} // namespace Agent
