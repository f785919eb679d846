#include "platform/routing/RouteConfig.h"

#include "platform/orb/attribute/DefineType.h"

namespace Routing::Rib {

ORB_DEFINE_TYPE(RouteConfig)
ORB_REGISTER(RouteConfig, RouteConfig, 0, 1)

void RouteConfig::routeAdd(const Route& route) {
    tellIf(table_.insertOrAssign(route), routeAttribute, route.key());
}

void RouteConfig::routeDel(const RouteKey& key) {
    if (tellIf(table_.erase(key), routeAttribute, key)) {
        noteRoom();
    }
}

void RouteConfig::doDeleteRoutesForVrf(Vrf::VrfIdMap::VrfId vrfId) {
    clearVrf(vrfId, routeAttribute);
}

} // namespace Routing::Rib
