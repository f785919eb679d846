#include "platform/routing/RouteConfig.h"

#include "platform/orb/attribute/DefineType.h"

namespace Routing::Rib {

ORB_DEFINE_TYPE(RouteConfig)
ORB_REGISTER(RouteConfig, RouteConfig, 0, 1)

Route RouteConfig::route(const RouteKey& key) const {
    const Route* found = table_.find(key);
    return found == nullptr ? Route() : *found;
}

void RouteConfig::routeAdd(const Route& route) {
    if (table_.insertOrAssign(route)) {
        const RouteKey stable = route.key();
        notify(routeAttribute, &stable);
    }
}

void RouteConfig::routeDel(const RouteKey& key) {
    const RouteKey stable = key;
    if (table_.erase(stable)) {
        notify(routeAttribute, &stable);
        noteRoom();
    }
}

void RouteConfig::doDeleteRoutesForVrf(Vrf::VrfIdMap::VrfId vrfId) {
    const auto taken = table_.take(vrfId);
    if (taken == nullptr || !hasReactors()) {
        return;
    }
    const Orb::Ptr<const Orb::PtrInterface> kept = Orb::keep(*this);
    for (const Route& route : *taken) {
        notify(routeAttribute, &route.key());
    }
    noteRoom();
}

void RouteConfig::collectionCapacityIs(std::string_view collection, std::size_t capacity) {
    if (collection != "route") {
        throwUnknownCollection(orbTypeName, collection);
    }
    table_.capacityIs(capacity);
}

} // namespace Routing::Rib
