#include "platform/virtualip/VirtualIpStatus.h"

#include "platform/orb/DefineType.h"

namespace VirtualIp {

ORB_DEFINE_TYPE(VirtualIpIntfStatus)
ORB_DEFINE_TYPE(VirtualIpStatus)
ORB_DEFINE_TYPE(VirtualIp6IntfStatus)
ORB_DEFINE_TYPE(VirtualIp6Status)

} // namespace VirtualIp
