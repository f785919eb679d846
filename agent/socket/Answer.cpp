#include "agent/socket/Answer.h"

#include "agent/document/DocumentError.h"
#include "agent/socket/BacklogAnswer.h"
#include "agent/socket/LeakAnswer.h"
#include "agent/socket/RouteAnswer.h"
#include "agent/socket/TraceAnswer.h"
#include "agent/socket/VipAnswer.h"
#include "agent/socket/WatchAnswer.h"

namespace Agent {

std::unique_ptr<Answer> makeAnswer(const AgentView& view, const Request& request) {
    using Kind = Request::Kind;
    if (request.vrf && view.root.containerSm(*request.vrf) == nullptr) {
        throw DocumentError("/vrf", "no VRF " + request.vrf->value() + " is running");
    }
    switch (request.kind) {
    case Kind::routes:
        return std::make_unique<RouteAnswer>(view, request.vrf, true);
    case Kind::vrfs:
        return std::make_unique<RouteAnswer>(view, request.vrf, false);
    case Kind::vips:
        return std::make_unique<VipAnswer>(view, request.vrf);
    case Kind::leaks:
        return std::make_unique<LeakAnswer>(view, request.vrf);
    case Kind::backlog:
        return std::make_unique<BacklogAnswer>(view, request.vrf);
    case Kind::watch:
        return std::make_unique<WatchAnswer>(view, request.vrf);
    case Kind::trace:
    case Kind::setTrace:
        break;
    }
    return std::make_unique<TraceAnswer>();
}

} // namespace Agent
