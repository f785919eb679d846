#pragma once

#include <optional>

#include "agent/topics/RouteFilter.h"
#include "agent/topics/RouteLookup.h"
#include "agent/topics/RouteWalk.h"
#include "agent/topics/StateRows.h"

namespace Agent {

/// Walks the state of the agent, a row a step, while the tables may change between two steps: each
/// row is as it is at its step.
class StateWalk {
  public:
    /// One VRF or all. `label` becomes the state's.
    StateWalk(const AgentView& view, const std::optional<L3::VrfName>& vrf,
              std::optional<std::string> label = {})
        : view_(view), label_(std::move(label)), lookup_(view), walk_(view, vrf) {}

    /// Leaves out the other routes.
    void filterIs(const RouteFilter& filter) { filter_ = filter; }

    /// Hands the next row to the sink, or none this time. Returns false behind the last.
    bool step(StateSink& sink);

  private:
    enum class Next { time, vrf, routes, totals, end };

    TotalsRow totalsRow() const;

    AgentView view_;
    std::optional<std::string> label_;
    RouteLookup lookup_;
    RouteWalk walk_;
    RouteFilter filter_;
    Next next_ = Next::time;
};

/// What a state says of a VRF itself.
VrfRow vrfRow(const AgentView& view, const RouteWalk::ContainerSm& vrf);

/// Hands the whole state to the sink, as it is now. The label, if any, is one that a scenario gives
/// it.
void printState(StateSink& sink, const AgentView& view,
                const std::optional<std::string>& label = {});

} // namespace Agent
