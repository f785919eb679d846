#pragma once

#include <array>
#include <cstddef>
#include <ostream>
#include <string>

#include "agent/show/StatePrinter.h"

namespace Agent {

/// Prints a state as tables for people, one per VRF and family. Columns are as wide as their widest
/// cell, so routes are walked twice: what it takes does not grow with the text.
class TablePrinter : public StatePrinter {
  public:
    TablePrinter(std::ostream& out, bool colour) : out_(out), colour_(colour) {}

    void print(const StateView& state, const std::string* label) override;

  private:
    static constexpr std::size_t columns = 5;
    using Row = std::array<std::string, columns>;
    using Widths = std::array<std::size_t, columns>;

    static Row rowOf(const StateView& state, const StateView::Route& route);
    void printVrf(const StateView& state, const StateView::Vrf& vrf);
    void printRoutes(const StateView& state, const StateView::Vrf& vrf, Lanx::AddressFamily af);
    void printRow(const Row& row, const Widths& widths);
    std::string bold(const std::string& text) const;

    std::ostream& out_;
    bool colour_;
    bool first_ = true;
};

} // namespace Agent
