#include "agent/run/ChangeText.h"

#include "agent/base/JsonString.h"
#include "agent/show/RouteText.h"
#include "platform/ringlog/Printable.h"

namespace Agent {

using Kind = RouteFeed::Kind;

void appendChangeAsJson(std::string& out, double time, const RouteFeed::Change& change,
                        const RouteLookup& lookup) {
    out += "{\"time\":";
    out += jsonSeconds(time);
    out += change.kind == Kind::comes     ? ",\"change\":\"comes\",\"vrf\":"
           : change.kind == Kind::changes ? ",\"change\":\"changes\",\"vrf\":"
                                          : ",\"change\":\"goes\",\"vrf\":";
    appendJsonString(out, change.vrf.value());
    out += ",\"prefix\":\"";
    change.key.prefix().appendTo(out);
    out += '"';
    if (change.kind != Kind::goes) {
        out += ',';
        appendRouteMembers(out, change.route, lookup.target(change.route));
    }
    out += "}\n";
}

void appendChangeAsText(std::string& out, const RouteFeed::Change& change,
                        const RouteLookup& lookup) {
    out += change.kind == Kind::comes ? "+ " : change.kind == Kind::changes ? "~ " : "- ";
    Ringlog::appendPrintable(out, change.vrf.value());
    out += ' ';
    change.key.prefix().appendTo(out);
    if (change.kind != Kind::goes) {
        const RouteLookup::Target target = lookup.target(change.route);
        out += "  " + routeTypeText(change.route.routeType()) + "  ";
        Ringlog::appendPrintable(out, target.intfId ? target.intfId->name() : "-");
        out += "  ";
        out += target.via.empty() ? "-" : target.via;
        if (target.leaked) {
            out += "  from ";
            Ringlog::appendPrintable(out, target.sourceVrf ? target.sourceVrf->value() : "-");
        }
    }
    out += '\n';
}

} // namespace Agent
