#include "platform/ip/Ip6IntfStatus.h"

#include "platform/orb/attribute/DefineType.h"

namespace Ip6 {

ORB_DEFINE_TYPE(IntfStatus)

} // namespace Ip6
