#pragma once

#include "platform/lanx/IntfId.h"
#include "platform/orb/attribute/Declare.h"

namespace Interface {

/// The interfaces that are kept on this device only, each true while it is set up.
class AllIntfStatusLocalDir : public Orb::Entity {
    ORB_ENTITY(AllIntfStatusLocalDir, "Interface::AllIntfStatusLocalDir")
    ORB_MAP(258, Lanx::IntfId, bool, intf)
};

} // namespace Interface
