#include "platform/ip/AllVrfStatusLocal.h"

#include "platform/orb/attribute/DefineType.h"

namespace Ip {

ORB_DEFINE_TYPE(AllVrfStatusLocal)

} // namespace Ip
