#include "platform/routing/DirectNetLeakStatus.h"

#include "platform/orb/attribute/DefineType.h"

namespace Routing {

ORB_DEFINE_TYPE(DirectNetLeakStatus)
ORB_REGISTER(DirectNetLeakStatus, DirectNetLeakStatus, 0, 4)

} // namespace Routing
