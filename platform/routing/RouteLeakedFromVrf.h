#pragma once

#include <utility>

#include "platform/lanx/IpGenPrefix.h"
#include "platform/orb/attribute/Declare.h"
#include "platform/orb/attribute/Value.h"
#include "platform/vrf/VrfId.h"

namespace Routing {

/// One leak of a source VRF: the prefix and the VRF that it goes to.
class LeakedPrefix {
    ORB_VALUE(LeakedPrefix, "Routing::LeakedPrefix", (Lanx::IpGenPrefix, genPrefix),
              (Vrf::VrfIdMap::VrfId, destVrfId))
};

/// The connected prefixes that one VRF leaks, each with the VRFs that it goes to. Reactors are told
/// of each (prefix, destination) that comes or goes, with a LeakedPrefix.
class RouteLeakedFromVrf : public Orb::Entity {
    ORB_ENTITY(RouteLeakedFromVrf, "Routing::RouteLeakedFromVrf")
    ORB_CONSTRUCTOR((Vrf::VrfIdMap::VrfId, sourceVrfId))
    ORB_KEY(Vrf::VrfIdMap::VrfId, sourceVrfId)

  public:
    using VrfId = Vrf::VrfIdMap::VrfId;
    using DestVrfIds = Orb::OrderedMap<VrfId, bool>;
    static constexpr Orb::AttributeId destVrfIdAttribute = Orb::firstAttributeId + 1;

    explicit RouteLeakedFromVrf(Arguments arguments) : arguments_(std::move(arguments)) {}

    /// The destinations of every leaked prefix; a prefix without any is not there.
    const Orb::HashMap<Lanx::IpGenPrefix, DestVrfIds>& destVrfId() const { return byPrefix_; }

    bool leaks(const Lanx::IpGenPrefix& prefix, VrfId destVrfId) const;
    void destVrfIdIs(const Lanx::IpGenPrefix& prefix, VrfId destVrfId);
    void destVrfIdDel(const Lanx::IpGenPrefix& prefix, VrfId destVrfId);

  private:
    Orb::HashMap<Lanx::IpGenPrefix, DestVrfIds> byPrefix_;
};

} // namespace Routing
