#pragma once

#include "directnet/backlog/IntfBacklog.h"
#include "platform/orb/attribute/Declare.h"

namespace Routing::DirectNet {

/// The backlogs of all VRFs.
class IntfBacklogByVrf : public Orb::Entity {
    ORB_ENTITY(IntfBacklogByVrf, "Routing::DirectNet::IntfBacklogByVrf")
    ORB_NO_CONSTRUCTOR(IntfBacklogByVrf)
    ORB_CHILDREN(258, IntfBacklog, intfBacklog)
};

} // namespace Routing::DirectNet
