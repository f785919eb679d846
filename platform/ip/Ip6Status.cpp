#include "platform/ip/Ip6Status.h"

#include "platform/orb/attribute/DefineType.h"

namespace Ip6 {

ORB_DEFINE_TYPE(Status)

} // namespace Ip6
