#include "platform/vrf/NameToIdMapWrapper.h"

#include "platform/orb/attribute/DefineType.h"

namespace Vrf::VrfIdMap {

ORB_DEFINE_TYPE(NameToIdMapWrapper)

} // namespace Vrf::VrfIdMap
