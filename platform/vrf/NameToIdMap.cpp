#include "platform/vrf/NameToIdMap.h"

#include "platform/orb/attribute/DefineType.h"

namespace Vrf::VrfIdMap {

ORB_DEFINE_TYPE(NameToIdMap)

} // namespace Vrf::VrfIdMap
