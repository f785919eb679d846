#include "platform/ip/VrfIpIntfStatus.h"

#include "platform/orb/DefineType.h"

namespace Ip {

ORB_DEFINE_TYPE(VrfIpIntfStatus)

} // namespace Ip
