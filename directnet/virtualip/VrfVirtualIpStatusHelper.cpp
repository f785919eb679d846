#include "directnet/virtualip/VrfVirtualIpStatusHelper.h"

#include "directnet/model/Trace.h"
#include "platform/orb/DefineType.h"

namespace Routing::DirectNet {

namespace {

DIRECTNET_TRACE_UNIT("VrfVirtualIpStatus");

/// The one place of the rule, for both families.
template <typename Helper>
void maybeDeleteVrfVirtualIpStatusT(Helper& helper, const L3::VrfName& vrfName) {
    bool containerGone = true;
    if (!helper.nameToIdMapWrapper()->vrfIdExists(vrfName)) {
        DIRECTNET_DUALLOG(9, "VRF name to ID map has been deleted for VRF ", vrfName);
    } else if (vrfName == L3::VrfName::defaultVrf()) {
        DIRECTNET_DUALLOG(9, "ContainerSm is present for VRF ", vrfName);
        containerGone = false;
    } else if (const auto* local = helper.allVrfStatusLocal()->vrf(vrfName); local == nullptr) {
        DIRECTNET_DUALLOG(9, "allVrfStatusLocal missing for VRF ", vrfName);
    } else if (local->state() != Ip::VrfState::active) {
        DIRECTNET_DUALLOG(9, "allVrfStatusLocal not active for VRF ", vrfName, " state ",
                          local->state());
    } else {
        DIRECTNET_DUALLOG(9, "ContainerSm is present for VRF ", vrfName);
        containerGone = false;
    }

    const auto* table = helper.allVrfVirtualIpStatus()->vrfVirtualIpStatus(vrfName);
    if (table == nullptr || !table->virtualIp().empty()) {
        DIRECTNET_DUALLOG(9, "At least one virtual IP present in VRF ", vrfName);
        return;
    }
    DIRECTNET_DUALLOG(9, "No virtual IPs present in VRF ", vrfName);
    if (containerGone) {
        DIRECTNET_DUALLOG(8, "Delete VrfVirtualIpStatus for VRF ", vrfName);
        helper.allVrfVirtualIpStatus()->vrfVirtualIpStatusDel(vrfName);
    }
}

} // namespace

Orb::Ptr<Ipv4::VrfVirtualIpStatus>
Ipv4::VrfVirtualIpStatusHelper::findOrCreateVrfVirtualIpStatus(const L3::VrfName& vrfName) {
    return Orb::Ptr(allVrfVirtualIpStatus()->vrfVirtualIpStatusIs(vrfName));
}

Orb::Ptr<Ipv6::VrfVirtualIpStatus>
Ipv6::VrfVirtualIpStatusHelper::findOrCreateVrfVirtualIpStatus(const L3::VrfName& vrfName) {
    return Orb::Ptr(allVrfVirtualIpStatus()->vrfVirtualIpStatusIs(vrfName));
}

void Ipv4::VrfVirtualIpStatusHelper::maybeDeleteVrfVirtualIpStatus(const L3::VrfName& vrfName) {
    maybeDeleteVrfVirtualIpStatusT(*this, vrfName);
}

void Ipv6::VrfVirtualIpStatusHelper::maybeDeleteVrfVirtualIpStatus(const L3::VrfName& vrfName) {
    maybeDeleteVrfVirtualIpStatusT(*this, vrfName);
}

} // namespace Routing::DirectNet

namespace Routing::DirectNet::Ipv4 {

ORB_DEFINE_TYPE(VrfVirtualIpStatusHelper)
ORB_REGISTER(VrfVirtualIpStatusHelper, VrfVirtualIpStatusHelper, unitVrfVirtualIpStatus, 3)

} // namespace Routing::DirectNet::Ipv4

namespace Routing::DirectNet::Ipv6 {

ORB_DEFINE_TYPE(VrfVirtualIpStatusHelper)
ORB_REGISTER(VrfVirtualIpStatusHelper, VrfVirtualIpStatusHelper, unitVrfVirtualIpStatus, 0)

} // namespace Routing::DirectNet::Ipv6
