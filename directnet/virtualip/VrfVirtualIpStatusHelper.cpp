#include "directnet/virtualip/VrfVirtualIpStatusHelper.h"

#include "directnet/model/Trace.h"
#include "platform/orb/attribute/DefineType.h"

namespace Routing::DirectNet {

namespace {

DIRECTNET_TRACE_UNIT("VrfVirtualIpStatus");

/// The one place of the rule, for both families.
template <typename Helper>
void maybeDeleteVrfVirtualIpStatusT(Helper& helper, const L3::VrfName& vrfName) {
    bool containerGone = true;
    if (helper.nameToIdMapWrapper() == nullptr
        || !helper.nameToIdMapWrapper()->vrfIdExists(vrfName)) {
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

namespace Ipv4 {

ORB_DEFINE_TYPE(VrfVirtualIpStatusHelper)
ORB_REGISTER(VrfVirtualIpStatusHelper, VrfVirtualIpStatusHelper, unitVrfVirtualIpStatus, 3)

Orb::Ptr<VrfVirtualIpStatus>
VrfVirtualIpStatusHelper::findOrCreateVrfVirtualIpStatus(const L3::VrfName& vrfName) {
    return Orb::Ptr(allVrfVirtualIpStatus()->vrfVirtualIpStatusIs(vrfName));
}

void VrfVirtualIpStatusHelper::maybeDeleteVrfVirtualIpStatus(const L3::VrfName& vrfName) {
    maybeDeleteVrfVirtualIpStatusT(*this, vrfName);
}

} // namespace Ipv4

namespace Ipv6 {

ORB_DEFINE_TYPE(VrfVirtualIpStatusHelper)
ORB_REGISTER(VrfVirtualIpStatusHelper, VrfVirtualIpStatusHelper, unitVrfVirtualIpStatus, 0)

Orb::Ptr<VrfVirtualIpStatus>
VrfVirtualIpStatusHelper::findOrCreateVrfVirtualIpStatus(const L3::VrfName& vrfName) {
    return Orb::Ptr(allVrfVirtualIpStatus()->vrfVirtualIpStatusIs(vrfName));
}

void VrfVirtualIpStatusHelper::maybeDeleteVrfVirtualIpStatus(const L3::VrfName& vrfName) {
    maybeDeleteVrfVirtualIpStatusT(*this, vrfName);
}

} // namespace Ipv6

} // namespace Routing::DirectNet
