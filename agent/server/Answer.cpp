#include "agent/server/Answer.h"

#include "agent/patch/DocumentError.h"
#include "agent/server/BacklogAnswer.h"
#include "agent/server/LeakAnswer.h"
#include "agent/server/RouteAnswer.h"
#include "agent/server/TraceAnswer.h"
#include "agent/server/VipAnswer.h"
#include "agent/server/WatchAnswer.h"

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
