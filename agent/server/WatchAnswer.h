#pragma once

#include <optional>

#include "agent/topics/Answer.h"
#include "agent/topics/ChangeRow.h"
#include "agent/topics/RouteFilter.h"
#include "agent/topics/RouteLookup.h"
#include "agent/topics/RouteWalk.h"

namespace Agent {

/// What a watch begins with: the routes that there are, {"change":"is","vrf":..,"prefix":..,...}
/// each, and in the end {"change":"complete"}.
class WatchAnswer : public Answer {
  public:
    WatchAnswer(const AgentView& view, const std::optional<L3::VrfName>& vrf,
                const RouteFilter& filter)
        : lookup_(view), walk_(view, vrf), filter_(filter) {}

    bool appendNext(std::string& out) override;

  private:
    RouteLookup lookup_;
    RouteWalk walk_;
    RouteFilter filter_;
    bool isComplete_ = false;
};

} // namespace Agent
