#pragma once

#include "platform/orb/attribute/Declare.h"
#include "platform/routing/PerVrfTable.h"
#include "platform/routing/Route.h"

namespace Routing::Rib {

/// The routes that one protocol configures in one address family, of all VRFs. Reactors are told
/// of each route that comes, changes or goes, with its RouteKey.
class RouteConfig : public OrbMemtab::Table {
    ORB_ENTITY(RouteConfig, "Routing::Rib::RouteConfig")

  public:
    static constexpr Orb::AttributeId routeAttribute = Orb::firstAttributeId;
    using Routes = PerVrfTable<Route>::Records;

    /// The route of that key, or the default route.
    Route route(const RouteKey& key) const;

    /// Fetches what route() and routeAdd() will read first, for a caller that has work until then.
    void prefetch(const RouteKey& key) const { table_.prefetch(key); }

    /// The VRF's routes; null while it has none.
    const Routes* routes(Vrf::VrfIdMap::VrfId vrfId) const { return table_.records(vrfId); }
    std::size_t size() const { return table_.size(); }

    bool hasRoomFor(const RouteKey& key) const { return table_.hasRoomFor(key); }

    /// Adds the route, or replaces that of its key. Throws RangeError when the table is full.
    void routeAdd(const Route& route);
    void routeDel(const RouteKey& key);
    void doDeleteRoutesForVrf(Vrf::VrfIdMap::VrfId vrfId);

    void collectionCapacityIs(std::string_view collection, std::size_t capacity) override;

  private:
    PerVrfTable<Route> table_;
};

} // namespace Routing::Rib
