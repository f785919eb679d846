#pragma once

#include "platform/lanx/IntfId.h"
#include "platform/lanx/IpGenPrefix.h"
#include "platform/orb/attribute/Value.h"

namespace Routing::DirectNet {

/// One unit of backlog work: the prefix must be looked at again because of the interface.
class IntfIdAndPrefix {
    ORB_VALUE(IntfIdAndPrefix, "Routing::DirectNet::IntfIdAndPrefix", (Lanx::IntfId, intfId),
              (Lanx::IpGenPrefix, genPrefix))
};

// Kept by the million.
static_assert(sizeof(IntfIdAndPrefix) <= 32);

} // namespace Routing::DirectNet
