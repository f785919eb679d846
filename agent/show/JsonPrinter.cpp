#include "agent/show/JsonPrinter.h"

#include <nlohmann/json.hpp>
#include <string_view>

#include "agent/show/Output.h"

namespace Agent {

using Lanx::AddressFamily;

namespace {

using json = nlohmann::json;

/// A JSON string. Names may hold any bytes; what is no UTF-8 is replaced.
std::string jsonString(std::string_view text) {
    return json(text).dump(-1, ' ', false, json::error_handler_t::replace);
}

std::string number(double seconds) { return json(StateView::inMicroseconds(seconds)).dump(); }

const char* boolean(bool value) { return value ? "true" : "false"; }

} // namespace

void JsonPrinter::print(const StateView& state, const std::string* label) {
    out_ << "{\"time\":" << number(state.time());
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
         << ",\"ready\":{\"ipv4\":" << boolean(vrf.ipv4Ready)
         << ",\"ipv6\":" << boolean(vrf.ipv6Ready) << '}';
    if (vrf.rib != nullptr) {
        out_ << ",\"rib\":{\"ready\":" << boolean(vrf.rib->ready())
             << ",\"readyTime\":" << number(vrf.rib->readyTime()) << '}';
    }
    out_ << ",\"backlog\":" << vrf.backlog << ",\"ipv4\":{";
    printRoutes(state, vrf, AddressFamily::ipv4);
    out_ << "},\"ipv6\":{";
    printRoutes(state, vrf, AddressFamily::ipv6);
    out_ << "}}";
}

void JsonPrinter::printRoutes(const StateView& state, const StateView::Vrf& vrf, AddressFamily af) {
    const char* separator = "";
    for (const StateView::Route* route : state.routes(vrf, af)) {
        const StateView::Target target = state.target(*route);
        out_ << separator << '"' << route->key().prefix() << "\":{\"type\":" << route->routeType()
             << ",\"intf\":" << (target.intfId ? jsonString(target.intfId->name()) : "null")
             << ",\"via\":" << (target.via.empty() ? "null" : jsonString(target.via));
        if (target.leaked) {
            out_ << ",\"sourceVrf\":"
                 << (target.sourceVrf != nullptr ? jsonString(target.sourceVrf->value()) : "null");
        }
        out_ << '}';
        separator = ",";
    }
}

} // namespace Agent
