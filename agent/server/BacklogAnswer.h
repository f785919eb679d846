#pragma once

#include <optional>

#include "agent/server/Answer.h"
#include "agent/server/VrfCursor.h"
#include "directnet/backlog/IntfIdAndPrefix.h"

namespace Agent {

/// What waits to be written: {"vrf":..,"intf":..,"prefix":..} each.
class BacklogAnswer : public Answer {
  public:
    BacklogAnswer(const AgentView& view, const std::optional<L3::VrfName>& vrf)
        : vrfs_(view, vrf) {}

    bool appendNext(std::string& out) override;

  private:
    VrfCursor vrfs_;
    std::optional<Routing::DirectNet::IntfIdAndPrefix> last_;
};

} // namespace Agent
