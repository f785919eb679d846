#pragma once

#include "platform/lanx/IntfId.h"
#include "platform/lanx/IpGenPrefix.h"
#include "platform/orb/attribute/Value.h"

namespace Routing::DirectNet {

/// One unit of backlog work: the prefix is to be evaluated again because of the interface.
class IntfIdAndPrefix {
    ORB_VALUE(IntfIdAndPrefix, "Routing::DirectNet::IntfIdAndPrefix", (Lanx::IntfId, intfId),
              (Lanx::IpGenPrefix, genPrefix))
};

// There may be millions.
static_assert(sizeof(IntfIdAndPrefix) <= 24);

} // namespace Routing::DirectNet
