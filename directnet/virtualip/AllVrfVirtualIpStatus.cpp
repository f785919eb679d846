#include "directnet/virtualip/AllVrfVirtualIpStatus.h"

#include "platform/orb/attribute/DefineType.h"

namespace Routing::DirectNet::Ipv4 {

ORB_DEFINE_TYPE(AllVrfVirtualIpStatus)
ORB_REGISTER(AllVrfVirtualIpStatus, AllVrfVirtualIpStatus, unitVrfVirtualIpStatus, 5)

} // namespace Routing::DirectNet::Ipv4

namespace Routing::DirectNet::Ipv6 {

ORB_DEFINE_TYPE(AllVrfVirtualIpStatus)
ORB_REGISTER(AllVrfVirtualIpStatus, AllVrfVirtualIpStatus, unitVrfVirtualIpStatus, 2)

} // namespace Routing::DirectNet::Ipv6
