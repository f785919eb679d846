#include "agent/server/WatchAnswer.h"

#include "agent/base/JsonString.h"
#include "agent/show/RouteText.h"

namespace Agent {

bool WatchAnswer::appendNext(std::string& out) {
    if (complete_) {
        return false;
    }
    if (const auto* route = walk_.nextRoute()) {
        out += "{\"change\":\"is\",\"vrf\":";
        appendJsonString(out, walk_.vrf()->vrfName().value());
        out += ",\"prefix\":\"";
        route->key().prefix().appendTo(out);
        out += "\",";
        appendRouteMembers(out, *route, lookup_.target(*route));
        out += "}\n";
    } else if (!walk_.nextVrf()) {
        out += "{\"change\":\"complete\"}\n";
        complete_ = true;
    }
    return true;
}

} // namespace Agent
