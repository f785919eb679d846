#pragma once

#include "platform/orb/attribute/Declare.h"
#include "platform/vrf/VrfId.h"
#include "platform/vrf/VrfName.h"

namespace Vrf::VrfIdMap {

/// The ids of the VRFs, by name.
class NameToIdMap : public Orb::Entity {
    ORB_ENTITY(NameToIdMap, "Vrf::VrfIdMap::NameToIdMap")
    /// A name that is not here reads as the invalid id.
    ORB_MAP(258, L3::VrfName, VrfId, vrfId)

  public:
    bool vrfIdExists(const L3::VrfName& name) const { return vrfId().contains(name); }
};

} // namespace Vrf::VrfIdMap
