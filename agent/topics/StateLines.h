#pragma once

#include <string>

#include "agent/topics/StateRows.h"

namespace Agent {

/// Appends each row of a state as JSON on a line: {"time":..}, for each VRF {"vrf":..} followed by
/// its routes, {"prefix":..} each, and in the end {"vias":..}.
class StateLines final : public StateSink {
  public:
    explicit StateLines(std::string& out) : out_(out) {}

    void time(const TimeRow& row) override { appendJsonLine(out_, row); }
    void vrf(const VrfRow& row) override { appendJsonLine(out_, row); }
    void route(const RouteRow& row) override { appendJsonLine(out_, row); }
    void totals(const TotalsRow& row) override { appendJsonLine(out_, row); }

  private:
    std::string& out_;
};

} // namespace Agent
