#pragma once

#include "platform/lanx/IntfId.h"
#include "platform/orb/attribute/Declare.h"

namespace Interface {

/// The interfaces of the device, each true while it is set up.
class AllIntfStatusDir : public Orb::Entity {
    ORB_ENTITY(AllIntfStatusDir, "Interface::AllIntfStatusDir")
    ORB_MAP(258, Lanx::IntfId, bool, intf)
};

} // namespace Interface
