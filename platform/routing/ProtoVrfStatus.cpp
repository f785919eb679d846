#include "platform/routing/ProtoVrfStatus.h"

#include "platform/orb/attribute/DefineType.h"

namespace Routing::Rib {

ORB_DEFINE_TYPE(ProtoVrfStatus)
ORB_REGISTER(ProtoVrfStatus, ProtoVrfStatus, 0, 3)

} // namespace Routing::Rib
