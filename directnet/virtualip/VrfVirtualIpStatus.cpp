#include "directnet/virtualip/VrfVirtualIpStatus.h"

#include "directnet/model/DefineFamilyType.h"

namespace Routing::DirectNet {

DIRECTNET_DEFINE_FAMILY_TYPE(VrfVirtualIpStatus)
ORB_REGISTER(Ipv6, Ipv6::VrfVirtualIpStatus, unitVrfVirtualIpStatus, 1)
ORB_REGISTER(Ipv4, Ipv4::VrfVirtualIpStatus, unitVrfVirtualIpStatus, 4)

} // namespace Routing::DirectNet
