#include "platform/routing/AllVrfRibReady.h"

#include "platform/orb/attribute/DefineType.h"

namespace Routing::Rib {

ORB_DEFINE_TYPE(AllVrfRibReady)

} // namespace Routing::Rib
