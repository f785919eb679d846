#pragma once

#include "platform/orb/Declare.h"
#include "platform/routing/RouteLeakedFromVrf.h"

namespace Routing {

/// The agent's own copy of a DirectNetLeakStatus.
class DirectNetLeakLocalStatus : public Orb::Entity {
    ORB_ENTITY(DirectNetLeakLocalStatus, "Routing::DirectNetLeakLocalStatus")
    struct Arguments {
        static constexpr auto fields() { return std::tuple<>(); }
    };
    ORB_CHILDREN(258, RouteLeakedFromVrf, leakedRouteBySourceVrf)

  public:
    explicit DirectNetLeakLocalStatus(Arguments = {}) {}
    Arguments arguments() const { return {}; }
};

} // namespace Routing
