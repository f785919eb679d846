#include "agent/show/TablePrinter.h"

#include <algorithm>

#include "agent/base/JsonString.h"
#include "agent/output/Output.h"
#include "agent/show/RouteText.h"

namespace Agent {

using Lanx::AddressFamily;

namespace {

bool isLeaked(const StateView::Route* route) {
    return route->srcVrfId() != Vrf::VrfIdMap::VrfId::invalid();
}

const char* yesOrNo(bool value) { return value ? "yes" : "no"; }

} // namespace

void TablePrinter::print(const StateView& state, const std::string* label) {
    if (!first_) {
        out_ << '\n';
    }
    first_ = false;
    out_ << "time " << jsonSeconds(state.time());
    if (label != nullptr) {
        out_ << "  " << printable(*label);
    }
    out_ << '\n';
    for (const StateView::Vrf& vrf : state.vrfs()) {
        printVrf(state, vrf);
    }
    out_ << "vias " << state.vias(AddressFamily::ipv4) << " ipv4, "
         << state.vias(AddressFamily::ipv6) << " ipv6; via sets " << state.viaSets() << '\n';
    finishOutput(out_);
}

void TablePrinter::printVrf(const StateView& state, const StateView::Vrf& vrf) {
    out_ << bold("VRF " + printable(vrf.container->vrfName().value())) << "  id "
         << vrf.container->vrfId() << ", ready ipv4 " << yesOrNo(vrf.ipv4Ready) << " ipv6 "
         << yesOrNo(vrf.ipv6Ready);
    if (vrf.rib != nullptr) {
        out_ << ", rib ";
        if (vrf.rib->ready()) {
            out_ << "ready at " << jsonSeconds(vrf.rib->readyTime());
        } else {
            out_ << "waiting";
        }
    }
    out_ << ", backlog " << vrf.backlog << '\n';
    printRoutes(state, vrf, AddressFamily::ipv4);
    printRoutes(state, vrf, AddressFamily::ipv6);
}

void TablePrinter::printRoutes(const StateView& state, const StateView::Vrf& vrf,
                               AddressFamily af) {
    const auto routes = state.routes(vrf, af);
    if (routes.empty()) {
        return;
    }
    TextTable table = routeTable(af, std::ranges::any_of(routes, isLeaked));
    for (const StateView::Route* route : routes) {
        const RouteLookup::Target target = state.target(*route);
        table.rowIs({route->key().prefix().toString(), routeTypeText(route->routeType()),
                     target.intfId ? std::string(target.intfId->name()) : "-",
                     target.via.empty() ? "-" : std::string(target.via),
                     !target.leaked     ? ""
                     : target.sourceVrf ? target.sourceVrf->value()
                                        : "-"});
    }
    table.print(out_, "  ");
}

std::string TablePrinter::bold(const std::string& text) const {
    return colour_ ? "\033[1m" + text + "\033[0m" : text;
}

} // namespace Agent
