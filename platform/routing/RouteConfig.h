#pragma once

#include "platform/orb/attribute/Declare.h"
#include "platform/routing/PerVrfTable.h"
#include "platform/routing/RouteForm.h"

namespace Routing::Rib {

/// The routes that one protocol configures in one address family, of all VRFs. Reactors are told
/// of each route that comes, changes or goes, with its RouteKey.
class RouteConfig : public PerVrfTableEntity<RouteForm> {
    ORB_ENTITY(RouteConfig, "Routing::Rib::RouteConfig")

  public:
    static constexpr Orb::AttributeId routeAttribute = Orb::firstAttributeId;
    using Routes = PerVrfTable<RouteForm>::Records;

    RouteConfig() : PerVrfTableEntity("route", ringEntries) {}

    /// The route of that key, or the default route.
    Route route(const RouteKey& key) const { return route(key, Orb::HashTag::of(key)); }
    Route route(const RouteKey& key, Orb::HashTag tag) const {
        return table_.find(key, tag).value_or(Route());
    }

    /// Fetches what route() and routeAdd() will read first for the key of that tag, and then the
    /// route, for a caller that has work until then.
    void prefetch(Vrf::VrfIdMap::VrfId vrfId, Orb::HashTag tag) const {
        table_.prefetch(vrfId, tag);
    }
    void prefetchRoute(Vrf::VrfIdMap::VrfId vrfId, Orb::HashTag tag) const {
        table_.prefetchRecord(vrfId, tag);
    }

    /// The VRF's routes; null while it has none.
    const Routes* routes(Vrf::VrfIdMap::VrfId vrfId) const { return table_.records(vrfId); }

    /// Adds the route, or replaces that of its key. Throws RangeError when the table is full.
    void routeAdd(const Route& route) { routeAdd(route, Orb::HashTag::of(route.key())); }
    void routeDel(const RouteKey& key) { routeDel(key, Orb::HashTag::of(key)); }
    /// The same where the key's tag is at hand.
    void routeAdd(const Route& route, Orb::HashTag tag);
    void routeDel(const RouteKey& key, Orb::HashTag tag);
    void doDeleteRoutesForVrf(Vrf::VrfIdMap::VrfId vrfId);

  private:
    void memberIs(const Route& value) override { routeAdd(value); }
    void memberDel(const RouteKey& key) override { routeDel(key); }

    /// As many changes as a drain makes in its slice.
    static constexpr std::uint32_t ringEntries = 1U << 16;
};

} // namespace Routing::Rib
