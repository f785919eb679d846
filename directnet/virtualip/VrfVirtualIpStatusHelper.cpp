#include "directnet/virtualip/VrfVirtualIpStatusHelper.h"

#include "directnet/model/ContainerRule.h"
#include "directnet/model/DefineFamilyType.h"
#include "directnet/model/Trace.h"

namespace Routing::DirectNet {

namespace {

DIRECTNET_TRACE_UNIT("VrfVirtualIpStatus");

template <typename Family>
void maybeDeleteVrfVirtualIpStatusT(VrfVirtualIpStatusHelper<Family>& helper,
                                    const L3::VrfName& vrfName) {
    const ContainerRule container(vrfName, helper.nameToIdMapWrapper().get(),
                                  *helper.allVrfStatusLocal());
    if (container.due()) {
        DIRECTNET_DUALLOG(9, "ContainerSm is present for VRF ", vrfName);
    } else {
        DIRECTNET_DUALLOG(9, container.missing());
    }
    AllVrfVirtualIpStatus<Family>& tables = *helper.allVrfVirtualIpStatus();
    const auto* table = tables.vrfVirtualIpStatus(vrfName);
    if (table == nullptr || !table->virtualIp().empty()) {
        DIRECTNET_DUALLOG(9, "At least one virtual IP present in VRF ", vrfName);
        return;
    }
    DIRECTNET_DUALLOG(9, "No virtual IPs present in VRF ", vrfName);
    if (!container.due()) {
        DIRECTNET_DUALLOG(8, "Delete VrfVirtualIpStatus for VRF ", vrfName);
        tables.vrfVirtualIpStatusDel(vrfName);
    }
}

} // namespace

template <typename Family>
Orb::Ptr<VrfVirtualIpStatus<Family>>
VrfVirtualIpStatusHelper<Family>::findOrCreateVrfVirtualIpStatus(const L3::VrfName& vrfName) {
    return Orb::Ptr(allVrfVirtualIpStatus()->vrfVirtualIpStatusIs(vrfName));
}

template <typename Family>
void VrfVirtualIpStatusHelper<Family>::maybeDeleteVrfVirtualIpStatus(const L3::VrfName& vrfName) {
    maybeDeleteVrfVirtualIpStatusT(*this, vrfName);
}

DIRECTNET_DEFINE_FAMILY_TYPE(VrfVirtualIpStatusHelper)
ORB_REGISTER(Ipv6, Ipv6::VrfVirtualIpStatusHelper, unitVrfVirtualIpStatus, 0)
ORB_REGISTER(Ipv4, Ipv4::VrfVirtualIpStatusHelper, unitVrfVirtualIpStatus, 3)

} // namespace Routing::DirectNet
