#include "platform/virtualip/VirtualIpIntfStatus.h"

#include "platform/orb/attribute/DefineType.h"

namespace VirtualIp {

ORB_DEFINE_TYPE(VirtualIpIntfStatus)

} // namespace VirtualIp
