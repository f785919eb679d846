#pragma once

#include <optional>

#include "agent/server/Answer.h"
#include "agent/server/RouteWalk.h"
#include "agent/show/RouteLookup.h"

namespace Agent {

/// The routes that there are, in the form of changes: {"change":"is","vrf":..,"prefix":..,...}
/// each, and in the end {"change":"complete"}.
class WatchAnswer : public Answer {
  public:
    WatchAnswer(const AgentView& view, const std::optional<L3::VrfName>& vrf)
        : lookup_(view.root, view.inputs), walk_(view, vrf) {}

    bool appendNext(std::string& out) override;

  private:
    RouteLookup lookup_;
    RouteWalk walk_;
    bool complete_ = false;
};

} // namespace Agent
