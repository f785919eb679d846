#include "directnet/ready/GrState.h"

#include "platform/orb/attribute/DefineType.h"

namespace Routing::DirectNet {

ORB_DEFINE_TYPE(GrState)
ORB_REGISTER(GrState, GrState, unitRibReadySm, 1)

} // namespace Routing::DirectNet
