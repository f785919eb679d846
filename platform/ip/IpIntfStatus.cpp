#include "platform/ip/IpIntfStatus.h"

#include "platform/orb/attribute/DefineType.h"

namespace Ip {

ORB_DEFINE_TYPE(IpIntfStatus)

} // namespace Ip
