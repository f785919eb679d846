#pragma once

#include <cstdint>

#include "platform/orb/attribute/Declare.h"
#include "platform/vrf/NameToIdMap.h"

namespace Vrf::VrfIdMap {

/// Where the present map is found; the map as a whole may be replaced.
class NameToIdMapWrapper : public Orb::Entity {
    ORB_ENTITY(NameToIdMapWrapper, "Vrf::VrfIdMap::NameToIdMapWrapper")
    /// Raised by the map's publisher when everything in it is to be looked at again.
    ORB_ATTRIBUTE(258, std::uint32_t, generation)
    ORB_ATTRIBUTE(259, Orb::Ptr<NameToIdMap>, nameToIdMap)

  public:
    /// Also false while there is no map.
    bool vrfIdExists(const L3::VrfName& name) const {
        return nameToIdMap() != nullptr && nameToIdMap()->vrfIdExists(name);
    }
    VrfId vrfId(const L3::VrfName& name) const {
        return nameToIdMap() == nullptr ? VrfId::invalid() : nameToIdMap()->vrfId(name);
    }
};

} // namespace Vrf::VrfIdMap
