#include "directnet/virtualip/VirtualIpStatusSm.h"

#include "directnet/model/Trace.h"
#include "platform/orb/attribute/DefineType.h"
#include "platform/orb/container/Keys.h"

namespace Routing::DirectNet {

ORB_DEFINE_TYPE(VirtualIpStatusDeclarations<Traits::IPv4>)
ORB_DEFINE_TYPE(VirtualIpStatusDeclarations<Traits::IPv6>)
ORB_REGISTER(Ipv6, Ipv6::VirtualIpStatusSm, unitVirtualIpStatusSm, 0)
ORB_REGISTER(Ipv4, Ipv4::VirtualIpStatusSm, unitVirtualIpStatusSm, 1)

namespace {

DIRECTNET_TRACE_UNIT("VirtualIpStatusSm");

template <typename Family>
void handleVirtualIpStatusT(VirtualIpStatusSm<Family>& sm,
                            const typename VirtualIpTraits<Family>::Key& key) {
    using Virtual = VirtualIpTraits<Family>;
    const L3::VrfName vrfName = key.vrfName();
    const auto address = Virtual::addrWithMask(key);
    DIRECTNET_TRACE(8, "vrfName= ", vrfName, ", addr= ", address);
    // Also for a removal, which may so make a table only to offer it for deletion below.
    const auto table = sm.vrfVirtualIpStatusHelper()->findOrCreateVrfVirtualIpStatus(vrfName);
    if (const auto* entry = Virtual::collection(*sm.virtualIpStatus()).find(key)) {
        DIRECTNET_DUALLOG(8, "Adding virtual IP ", address, " to VrfVirtualIpStatus for VRF ",
                          vrfName);
        table->virtualIpIs(*entry);
    } else {
        DIRECTNET_DUALLOG(8, "Removing virtual IP ", address, " from VrfVirtualIpStatus for VRF ",
                          vrfName);
        table->virtualIpDel(key);
        sm.vrfVirtualIpStatusHelper()->maybeDeleteVrfVirtualIpStatus(vrfName);
    }
}

template <typename Family>
void handleVirtualIpStatusT(VirtualIpStatusSm<Family>& sm) {
    for (const auto& entry :
         Orb::objectsOf(VirtualIpTraits<Family>::collection(*sm.virtualIpStatus()))) {
        handleVirtualIpStatusT(sm, entry->fwkKey());
    }
}

template <typename Family>
void handleSubnetRoutesT(VirtualIpStatusSm<Family>& sm, bool enabled) {
    const auto& tables = *sm.vrfVirtualIpStatusHelper()->allVrfVirtualIpStatus();
    for (const auto& table : Orb::objectsOf(tables.vrfVirtualIpStatus())) {
        table->subnetRouteEnabledIs(enabled);
    }
}

} // namespace

template <typename Family>
void VirtualIpStatusSm<Family>::OrbVirtualIpStatus::onAttribute(Orb::AttributeId id,
                                                                const void* key) {
    if (id == Virtual::collectionAttribute) {
        this->owner()->handleVirtualIpStatus(Orb::keyAs<Key>(key));
    }
    if constexpr (Virtual::hasSubnets) {
        if (id == Virtual::Status::subnetRoutesAttribute) {
            this->owner()->handleSubnetRoutes();
        }
    }
}

template <typename Family>
void VirtualIpStatusSm<Family>::OrbVirtualIpStatus::notifierIs(
    Orb::Ptr<const typename Virtual::Status> status) {
    Reactor::notifierIs(std::move(status));
    if constexpr (Virtual::hasSubnets) {
        this->owner()->handleSubnetRoutes();
    }
}

template <typename Family>
VirtualIpStatusSm<Family>::VirtualIpStatusSm(Arguments arguments)
    : Declarations(std::move(arguments)), orbVirtualIpStatus_(this) {
    orbVirtualIpStatus_.notifierIs(this->virtualIpStatus());
    handleInitialized();
}

template <typename Family>
VirtualIpStatusSm<Family>::~VirtualIpStatusSm() {
    this->orbDoZombieReactors(true);
}

template <typename Family>
void VirtualIpStatusSm<Family>::handleInitialized() {
    if (this->initialized()) {
        DIRECTNET_DUALLOG(8, "already initialized");
        return;
    }
    handleVirtualIpStatus();
    this->initializedIs(true);
}

template <typename Family>
void VirtualIpStatusSm<Family>::handleVirtualIpStatus(const Key& key) {
    handleVirtualIpStatusT(*this, key);
    if constexpr (Virtual::hasSubnets) {
        handleSubnetRoutes(); // the table may be new
    }
}

template <typename Family>
void VirtualIpStatusSm<Family>::handleVirtualIpStatus() {
    handleVirtualIpStatusT(*this);
    handleSubnetRoutes();
}

template <typename Family>
void VirtualIpStatusSm<Family>::handleSubnetRoutes() {
    if constexpr (Virtual::hasSubnets) {
        handleSubnetRoutesT(*this, this->virtualIpStatus()->subnetRoutes());
    } else {
        DIRECTNET_DUALLOG(8, "handleSubnetRoutes (Ipv6)");
    }
}

template class VirtualIpStatusSm<Traits::IPv4>;
template class VirtualIpStatusSm<Traits::IPv6>;

} // namespace Routing::DirectNet
