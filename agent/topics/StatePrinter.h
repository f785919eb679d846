#pragma once

#include <memory>
#include <optional>
#include <ostream>
#include <vector>

#include "agent/base/Colour.h"
#include "agent/topics/StateRows.h"

namespace Agent {

/// Prints states in some form, VRF by VRF, their routes by address, then length. Throws
/// FailureError when the output takes no more.
class StatePrinter : public StateSink {
  public:
    void time(const TimeRow& row) final;
    void vrf(const VrfRow& row) final;
    void route(const RouteRow& row) final { routes_.push_back(row); }
    void totals(const TotalsRow& row) final;

  protected:
    using Routes = std::vector<RouteRow>; // in the order of their prefixes

    virtual void printTime(const TimeRow& row) = 0;
    virtual void printVrf(const VrfRow& row, const Routes& routes) = 0;
    virtual void printTotals(const TotalsRow& row) = 0;

  private:
    void finishVrf();

    std::optional<VrfRow> vrf_;
    Routes routes_; // of vrf_
};

/// Prints tables for people, one per VRF and family.
std::unique_ptr<StatePrinter> makeStateTables(std::ostream& out, Colour colour);

/// Prints each state as one compact JSON document on a line.
std::unique_ptr<StatePrinter> makeStateDocuments(std::ostream& out);

} // namespace Agent
