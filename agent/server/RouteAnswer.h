#pragma once

#include <optional>

#include "agent/server/Answer.h"
#include "agent/server/RouteWalk.h"
#include "agent/show/RouteLookup.h"

namespace Agent {

/// The VRFs and, if wanted, their routes: {"time":...}, then for each VRF
/// {"vrf":NAME,"id":..,"ready":..,"rib":..,"backlog":..,"routes":{"ipv4":N,"ipv6":N}} followed by
/// its routes, {"prefix":..,...} each, and in the end {"vias":..,"viaSets":..}.
class RouteAnswer : public Answer {
  public:
    RouteAnswer(const AgentView& view, const std::optional<L3::VrfName>& vrf, bool withRoutes);

    bool appendNext(std::string& out) override;

  private:
    enum class Next { time, vrf, routes, totals, end };

    void appendTime(std::string& out) const;
    void appendVrf(std::string& out, const RouteWalk::ContainerSm& vrf) const;
    void appendTotals(std::string& out) const;

    AgentView view_;
    RouteLookup lookup_;
    RouteWalk walk_;
    bool withRoutes_;
    Next next_ = Next::time;
};

} // namespace Agent
