#include "platform/routing/RouteConfig.h"

#include "platform/orb/attribute/DefineType.h"

namespace Routing::Rib {

ORB_DEFINE_TYPE(RouteConfig)
ORB_REGISTER(RouteConfig, RouteConfig, 0, 1)

void RouteConfig::routeAdd(const Route& route, Orb::HashTag tag) {
    tellIf(table_.insertOrAssign(route, tag), routeAttribute, route.key());
}

void RouteConfig::routeDel(const RouteKey& key, Orb::HashTag tag) {
    if (tellIf(table_.erase(key, tag), routeAttribute, key)) {
        noteRoom();
    }
}

void RouteConfig::doDeleteRoutesForVrf(Vrf::VrfIdMap::VrfId vrfId) {
    clearVrf(vrfId, routeAttribute);
}

} // namespace Routing::Rib
