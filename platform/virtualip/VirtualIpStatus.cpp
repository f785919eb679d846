#include "platform/virtualip/VirtualIpStatus.h"

#include "platform/orb/attribute/DefineType.h"

namespace VirtualIp {

ORB_DEFINE_TYPE(VirtualIpStatus)

} // namespace VirtualIp
