#pragma once

#include <ostream>
#include <string>

#include "agent/show/StatePrinter.h"

namespace Agent {

/// Prints a state as tables for people, one per VRF and family.
class TablePrinter : public StatePrinter {
  public:
    TablePrinter(std::ostream& out, bool colour) : out_(out), colour_(colour) {}

    void print(const StateView& state, const std::string* label) override;

  private:
    void printVrf(const StateView& state, const StateView::Vrf& vrf);
    void printRoutes(const StateView& state, const StateView::Vrf& vrf, Lanx::AddressFamily af);
    std::string bold(const std::string& text) const;

    std::ostream& out_;
    bool colour_;
    bool first_ = true;
};

} // namespace Agent
