#include "platform/routing/ViaSetConfig.h"

#include "platform/orb/attribute/DefineType.h"

namespace Routing::Rib {

ORB_DEFINE_TYPE(ViaSetConfig)

} // namespace Routing::Rib
