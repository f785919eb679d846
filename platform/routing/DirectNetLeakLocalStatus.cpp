#include "platform/routing/DirectNetLeakLocalStatus.h"

#include "platform/orb/attribute/DefineType.h"

namespace Routing {

ORB_DEFINE_TYPE(DirectNetLeakLocalStatus)

} // namespace Routing
