#pragma once

#include <optional>
#include <string_view>

#include "agent/topics/StateRows.h"

namespace Agent {

/// Which routes somebody wants to see.
struct RouteFilter {
    std::optional<Lanx::IpGenPrefix> within; ///< the prefix itself, and those inside it
    std::optional<Lanx::IntfId> intf;        ///< that they lead to

    bool isGiven() const { return within || intf; }
    bool admits(const Lanx::IpGenPrefix& prefix) const {
        return !within || within->contains(prefix);
    }
    bool admits(const RouteRow& row) const {
        return admits(row.prefix) && (!intf || *intf == row.intf);
    }
};

} // namespace Agent
