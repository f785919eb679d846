#include "directnet/ready/AllVrfReadyStatus.h"

#include "platform/orb/attribute/DefineType.h"

namespace Routing::DirectNet {

ORB_DEFINE_TYPE(AllVrfReadyStatus)
ORB_REGISTER(AllVrfReadyStatus, AllVrfReadyStatus, unitRibReadySm, 2)

} // namespace Routing::DirectNet
