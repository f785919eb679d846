#pragma once

#include <ostream>

#include "agent/topics/StateRows.h"

namespace Agent {

/// Prints the VRFs of a state as one table.
class VrfTable final : public StateSink {
  public:
    explicit VrfTable(std::ostream& out) : out_(out) {}

    void time(const TimeRow&) override {}
    void vrf(const VrfRow& row) override { table_.append(row); }
    void route(const RouteRow&) override {}
    void totals(const TotalsRow&) override { table_.print(out_, ""); }

  private:
    std::ostream& out_;
    RowTable<VrfRow> table_;
};

} // namespace Agent
