#pragma once

#include "platform/ip/VrfStatusLocal.h"
#include "platform/orb/attribute/Declare.h"

namespace Ip {

/// The VRFs of this device.
class AllVrfStatusLocal : public Orb::Entity {
    ORB_ENTITY(AllVrfStatusLocal, "Ip::AllVrfStatusLocal")
    ORB_CHILDREN(258, VrfStatusLocal, vrf)
};

} // namespace Ip
