#include "agent/show/TablePrinter.h"

#include <algorithm>
#include <string_view>

#include "agent/show/Output.h"
#include "platform/ringlog/Printable.h"

namespace Agent {

using Lanx::AddressFamily;
using Routing::Fib::RouteType;

namespace {

std::string printable(std::string_view text) {
    std::string result;
    Ringlog::appendPrintable(result, text);
    return result;
}

std::string typeText(RouteType type) {
    switch (type) {
    case RouteType::receive:
        return "1 receive";
    case RouteType::attachedHost:
        return "2 attached-host";
    case RouteType::receiveBroadcast:
        return "3 receive-broadcast";
    case RouteType::dropDirectedBroadcast:
        return "4 drop-broadcast";
    case RouteType::connected:
        return "11 connected";
    case RouteType::unset:
        break;
    }
    return std::to_string(static_cast<unsigned>(type));
}

const char* yesOrNo(bool value) { return value ? "yes" : "no"; }

} // namespace

void TablePrinter::print(const StateView& state, const std::string* label) {
    if (!first_) {
        out_ << '\n';
    }
    first_ = false;
    out_ << "time " << state.time();
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
            out_ << "ready at " << StateView::inMicroseconds(vrf.rib->readyTime());
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
    const Row header{af == AddressFamily::ipv4 ? "IPv4 PREFIX" : "IPv6 PREFIX", "TYPE", "INTERFACE",
                     "VIA", "SOURCE VRF"};
    Widths widths{};
    bool anyLeaked = false;
    const auto widen = [&widths](const Row& row) {
        for (std::size_t column = 0; column < columns; ++column) {
            widths[column] = std::max(widths[column], row[column].size());
        }
    };
    widen(header);
    for (const StateView::Route* route : routes) {
        const Row row = rowOf(state, *route);
        widen(row);
        anyLeaked = anyLeaked || !row.back().empty();
    }
    Row shown = header;
    if (!anyLeaked) {
        shown.back().clear();
    }
    printRow(shown, widths);
    for (const StateView::Route* route : routes) {
        printRow(rowOf(state, *route), widths);
    }
}

TablePrinter::Row TablePrinter::rowOf(const StateView& state, const StateView::Route& route) {
    const StateView::Target target = state.target(route);
    std::string sourceVrf;
    if (target.leaked) {
        sourceVrf = target.sourceVrf == nullptr ? "-" : printable(target.sourceVrf->value());
    }
    return {route.key().prefix().toString(), typeText(route.routeType()),
            target.intfId ? printable(target.intfId->name()) : "-",
            target.via.empty() ? "-" : std::string(target.via), sourceVrf};
}

void TablePrinter::printRow(const Row& row, const Widths& widths) {
    std::string line = "  ";
    for (std::size_t column = 0; column < columns; ++column) {
        line += row[column];
        line.append(widths[column] - row[column].size() + 2, ' ');
    }
    line.erase(line.find_last_not_of(' ') + 1);
    out_ << line << '\n';
}

std::string TablePrinter::bold(const std::string& text) const {
    return colour_ ? "\033[1m" + text + "\033[0m" : text;
}

} // namespace Agent
