#include "directnet/root/VrfNameSet.h"

#include "platform/orb/attribute/DefineType.h"

namespace Routing::DirectNet {

ORB_DEFINE_TYPE(VrfNameSet)
ORB_REGISTER(VrfNameSet, VrfNameSet, unitDirectNet, 3)

} // namespace Routing::DirectNet
