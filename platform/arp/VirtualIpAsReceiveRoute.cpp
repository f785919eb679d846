#include "platform/arp/VirtualIpAsReceiveRoute.h"

#include "platform/orb/attribute/DefineType.h"

namespace Arp {

ORB_DEFINE_TYPE(VirtualIpAsReceiveRoute)

} // namespace Arp
