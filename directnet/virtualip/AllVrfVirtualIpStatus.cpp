#include "directnet/virtualip/AllVrfVirtualIpStatus.h"

#include "directnet/model/DefineFamilyType.h"

namespace Routing::DirectNet {

DIRECTNET_DEFINE_FAMILY_TYPE(AllVrfVirtualIpStatus)
ORB_REGISTER(Ipv6, Ipv6::AllVrfVirtualIpStatus, unitVrfVirtualIpStatus, 2)
ORB_REGISTER(Ipv4, Ipv4::AllVrfVirtualIpStatus, unitVrfVirtualIpStatus, 5)

} // namespace Routing::DirectNet
