#include "agent/show/JsonPrinter.h"

#include <string>

#include "agent/base/JsonString.h"
#include "agent/output/Output.h"
#include "agent/show/RouteText.h"

namespace Agent {

using Lanx::AddressFamily;

void JsonPrinter::print(const StateView& state, const std::string* label) {
    out_ << "{\"time\":" << jsonSeconds(state.time());
    if (label != nullptr) {
        out_ << ",\"label\":" << jsonString(*label);
    }
    out_ << ",\"vrfs\":{";
    const char* separator = "";
    for (const StateView::Vrf& vrf : state.vrfs()) {
        out_ << separator;
        printVrf(state, vrf);
        separator = ",";
    }
    out_ << "},\"vias\":{\"ipv4\":" << state.vias(AddressFamily::ipv4)
         << ",\"ipv6\":" << state.vias(AddressFamily::ipv6) << "},\"viaSets\":" << state.viaSets()
         << "}\n";
    finishOutput(out_);
}

void JsonPrinter::printVrf(const StateView& state, const StateView::Vrf& vrf) {
    out_ << jsonString(vrf.container->vrfName().value()) << ":{\"id\":" << vrf.container->vrfId()
         << ",\"ready\":{\"ipv4\":" << jsonBoolean(vrf.ipv4Ready)
         << ",\"ipv6\":" << jsonBoolean(vrf.ipv6Ready) << '}';
    if (vrf.rib != nullptr) {
        out_ << ",\"rib\":{\"ready\":" << jsonBoolean(vrf.rib->ready())
             << ",\"readyTime\":" << jsonSeconds(vrf.rib->readyTime()) << '}';
    }
    out_ << ",\"backlog\":" << vrf.backlog << ",\"ipv4\":{";
    printRoutes(state, vrf, AddressFamily::ipv4);
    out_ << "},\"ipv6\":{";
    printRoutes(state, vrf, AddressFamily::ipv6);
    out_ << "}}";
}

void JsonPrinter::printRoutes(const StateView& state, const StateView::Vrf& vrf, AddressFamily af) {
    std::string members;
    const char* separator = "";
    for (const StateView::Route* route : state.routes(vrf, af)) {
        members.clear();
        appendRouteMembers(members, *route, state.target(*route));
        out_ << separator << '"' << route->key().prefix() << "\":{" << members << '}';
        separator = ",";
    }
}

} // namespace Agent
