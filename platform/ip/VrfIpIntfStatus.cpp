#include "platform/ip/VrfIpIntfStatus.h"

#include "platform/orb/attribute/DefineType.h"

namespace Ip {

ORB_DEFINE_TYPE(VrfIpIntfStatus)

} // namespace Ip
