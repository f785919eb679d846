#include "agent/base/Utf8.h"
#include "agent/output/Output.h"
#include "agent/topics/StatePrinter.h"

namespace Agent {

namespace {

const char* yesOrNo(bool value) { return value ? "yes" : "no"; }

class StateTables final : public StatePrinter {
  public:
    StateTables(std::ostream& out, Colour colour) : out_(out), colour_(colour) {}

  private:
    void printTime(const TimeRow& row) override;
    void printVrf(const VrfRow& row, const Routes& routes) override;
    void printTotals(const TotalsRow& row) override;

    std::ostream& out_;
    Colour colour_;
    bool isFirst_ = true;
};

void StateTables::printTime(const TimeRow& row) {
    out_ << (isFirst_ ? "time " : "\ntime ") << secondsText(row.time.seconds);
    isFirst_ = false;
    if (row.label) {
        out_ << "  " << printable(*row.label);
    }
    out_ << '\n';
}

void StateTables::printVrf(const VrfRow& row, const Routes& routes) {
    out_ << colour_.bold("VRF " + printable(row.vrf)) << "  id " << row.id << ", ready ipv4 "
         << yesOrNo(row.ready.ipv4) << " ipv6 " << yesOrNo(row.ready.ipv6);
    if (row.rib) {
        out_ << ", rib " << ValueForm<std::optional<RibWait>>::text(row.rib);
    }
    if (row.backlog) {
        out_ << ", backlog " << *row.backlog;
    }
    out_ << '\n';
    RowTable<RouteRow> ipv4;
    RowTable<RouteRow> ipv6;
    for (const RouteRow& route : routes) {
        (route.prefix.af() == Lanx::AddressFamily::ipv4 ? ipv4 : ipv6).append(route);
    }
    ipv4.print(out_, "  ");
    ipv6.print(out_, "  ");
}

void StateTables::printTotals(const TotalsRow& row) {
    out_ << "vias " << row.ipv4Vias << " ipv4, " << row.ipv6Vias << " ipv6; via sets "
         << row.viaSets << '\n';
    finishOutput(out_);
}

} // namespace

std::unique_ptr<StatePrinter> makeStateTables(std::ostream& out, Colour colour) {
    return std::make_unique<StateTables>(out, colour);
}

} // namespace Agent
