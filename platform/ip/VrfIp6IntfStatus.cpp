#include "platform/ip/VrfIp6IntfStatus.h"

#include "platform/orb/attribute/DefineType.h"

namespace Ip6 {

ORB_DEFINE_TYPE(VrfIp6IntfStatus)

} // namespace Ip6
