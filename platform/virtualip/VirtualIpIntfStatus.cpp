#include "platform/virtualip/VirtualIpIntfStatus.h"

#include "platform/orb/DefineType.h"

namespace VirtualIp {

ORB_DEFINE_TYPE(VirtualIpIntfStatus)

} // namespace VirtualIp
