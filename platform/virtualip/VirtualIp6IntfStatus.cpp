#include "platform/virtualip/VirtualIp6IntfStatus.h"

#include "platform/orb/attribute/DefineType.h"

namespace VirtualIp {

ORB_DEFINE_TYPE(VirtualIp6IntfStatus)

} // namespace VirtualIp
