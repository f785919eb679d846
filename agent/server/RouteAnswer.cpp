#include "agent/server/RouteAnswer.h"

#include "agent/base/JsonString.h"
#include "agent/show/RouteText.h"
#include "platform/orb/value/Name.h"
#include "platform/routing/ProtoVrfStatus.h"

namespace Agent {

namespace {

std::string perFamily(std::size_t ipv4, std::size_t ipv6) {
    return "{\"ipv4\":" + std::to_string(ipv4) + ",\"ipv6\":" + std::to_string(ipv6) + "}";
}

} // namespace

RouteAnswer::RouteAnswer(const AgentView& view, const std::optional<L3::VrfName>& vrf,
                         bool withRoutes)
    : view_(view), lookup_(view.root, view.inputs), walk_(view, vrf), withRoutes_(withRoutes) {}

bool RouteAnswer::appendNext(std::string& out) {
    switch (next_) {
    case Next::time:
        appendTime(out);
        next_ = Next::vrf;
        return true;
    case Next::vrf:
        if (const auto* vrf = walk_.vrf()) {
            appendVrf(out, *vrf);
        }
        next_ = Next::routes;
        return true;
    case Next::routes:
        if (const auto* route = withRoutes_ ? walk_.nextRoute() : nullptr) {
            out += "{\"prefix\":\"";
            route->key().prefix().appendTo(out);
            out += "\",";
            appendRouteMembers(out, *route, lookup_.target(*route));
            out += "}\n";
            return true;
        }
        next_ = walk_.nextVrf() ? Next::vrf : Next::totals;
        return true;
    case Next::totals:
        appendTotals(out);
        next_ = Next::end;
        return true;
    case Next::end:
        break;
    }
    return false;
}

void RouteAnswer::appendTime(std::string& out) const {
    out += "{\"time\":" + jsonSeconds(view_.clock.now()) + "}\n";
}

void RouteAnswer::appendVrf(std::string& out, const RouteWalk::ContainerSm& vrf) const {
    out += "{\"vrf\":";
    appendJsonString(out, vrf.vrfName().value());
    out += ",\"id\":" + std::to_string(vrf.vrfId().value());
    out += ",\"ready\":{\"ipv4\":";
    out += jsonBoolean(vrf.vrfReadyStatus()->v4DirectNetsReady());
    out += ",\"ipv6\":";
    out += jsonBoolean(vrf.vrfReadyStatus()->v6DirectNetsReady());
    out += '}';
    const auto* rib = dynamic_cast<const Routing::Rib::ProtoVrfStatus*>(
        view_.inputs.protoStatusDir()->entity(Orb::Name(vrf.vrfName().value())));
    if (rib != nullptr) {
        out += ",\"rib\":{\"ready\":";
        out += jsonBoolean(rib->ready());
        out += ",\"readyTime\":" + jsonSeconds(rib->readyTime()) + "}";
    }
    out += ",\"backlog\":" + std::to_string(vrf.intfBacklog()->backlog().size());
    const auto* ipv4 = view_.root.ipv4AllVrfRouteConfig()->routes(vrf.vrfId());
    const auto* ipv6 = view_.root.ipv6AllVrfRouteConfig()->routes(vrf.vrfId());
    out += ",\"routes\":"
           + perFamily(ipv4 == nullptr ? 0 : ipv4->size(), ipv6 == nullptr ? 0 : ipv6->size())
           + "}\n";
}

void RouteAnswer::appendTotals(std::string& out) const {
    out += "{\"vias\":"
           + perFamily(view_.root.ipv4AllVrfViaConfig()->size(),
                       view_.root.ipv6AllVrfViaConfig()->size())
           + ",\"viaSets\":"
           + std::to_string(view_.inputs.viaSetConfig()->viaSetCollection()->size()) + "}\n";
}

} // namespace Agent
