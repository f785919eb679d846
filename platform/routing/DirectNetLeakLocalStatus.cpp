#include "platform/routing/DirectNetLeakLocalStatus.h"

#include "platform/orb/DefineType.h"

namespace Routing {

ORB_DEFINE_TYPE(DirectNetLeakLocalStatus)

} // namespace Routing
