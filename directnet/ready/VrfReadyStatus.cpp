#include "directnet/ready/VrfReadyStatus.h"

#include "platform/orb/attribute/DefineType.h"

namespace Routing::DirectNet {

ORB_DEFINE_TYPE(VrfReadyStatus)
ORB_REGISTER(VrfReadyStatus, VrfReadyStatus, unitRibReadySm, 3)

} // namespace Routing::DirectNet
