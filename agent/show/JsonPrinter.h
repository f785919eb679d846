#pragma once

#include <ostream>

#include "agent/show/StatePrinter.h"

namespace Agent {

/// Prints a state as one compact JSON document a line, route by route: what it takes does not grow
/// with the document.
class JsonPrinter : public StatePrinter {
  public:
    explicit JsonPrinter(std::ostream& out) : out_(out) {}

    void print(const StateView& state, const std::string* label) override;

  private:
    void printVrf(const StateView& state, const StateView::Vrf& vrf);
    void printRoutes(const StateView& state, const StateView::Vrf& vrf, Lanx::AddressFamily af);

    std::ostream& out_;
};

} // namespace Agent
