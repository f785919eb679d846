#include "platform/virtualip/VirtualIp6Status.h"

#include "platform/orb/attribute/DefineType.h"

namespace VirtualIp {

ORB_DEFINE_TYPE(VirtualIp6Status)

} // namespace VirtualIp
