#pragma once

#include "platform/memtab/Table.h"
#include "platform/orb/attribute/Declare.h"
#include "platform/routing/LeakedRoute.h"
#include "platform/routing/RouteLeakedFromVrf.h"

namespace Routing {

/// The connected prefixes of one address family that are leaked between VRFs, by source VRF.
class DirectNetLeakStatus : public OrbMemtab::Table {
    ORB_ENTITY(DirectNetLeakStatus, "Routing::DirectNetLeakStatus")
    ORB_CHILDREN(258, RouteLeakedFromVrf, leakedRouteBySourceVrf)

  public:
    /// Adds a leak; its source comes with the first of its leaks and goes with the last.
    void leakIs(const LeakedRoute& leak);
    void leakDel(const LeakedRoute& leak);

    /// Leaks are not bounded by declaration.
    void collectionCapacityIs(std::string_view collection, std::size_t capacity) override;
    Bond share(const Orb::Ptr<Vaultdb::Folder>& folder, const Orb::String& path) override;
    Bond follow(const Orb::Ptr<Vaultdb::Folder>& folder, const Orb::String& path) override;
};

} // namespace Routing
