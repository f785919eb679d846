#include "directnet/virtualip/VrfVirtualIpStatus.h"

#include "platform/orb/attribute/DefineType.h"

namespace Routing::DirectNet::Ipv4 {

ORB_DEFINE_TYPE(VrfVirtualIpStatus)
ORB_REGISTER(VrfVirtualIpStatus, VrfVirtualIpStatus, unitVrfVirtualIpStatus, 4)

} // namespace Routing::DirectNet::Ipv4

namespace Routing::DirectNet::Ipv6 {

ORB_DEFINE_TYPE(VrfVirtualIpStatus)
ORB_REGISTER(VrfVirtualIpStatus, VrfVirtualIpStatus, unitVrfVirtualIpStatus, 1)

} // namespace Routing::DirectNet::Ipv6
