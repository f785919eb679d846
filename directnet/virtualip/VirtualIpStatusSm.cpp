#include "directnet/virtualip/VirtualIpStatusSm.h"

#include "directnet/model/Trace.h"
#include "directnet/virtualip/VirtualIpTraits.h"
#include "platform/orb/attribute/DefineType.h"
#include "platform/orb/container/Keys.h"

namespace Routing::DirectNet {

namespace {

DIRECTNET_TRACE_UNIT("VirtualIpStatusSm");

template <typename Family, typename Sm, typename Key>
void handleVirtualIpStatusT(Sm& sm, const Key& key) {
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

template <typename Family, typename Sm>
void handleVirtualIpStatusT(Sm& sm) {
    for (const auto& entry :
         Orb::objectsOf(VirtualIpTraits<Family>::collection(*sm.virtualIpStatus()))) {
        handleVirtualIpStatusT<Family>(sm, entry->fwkKey());
    }
}

template <typename Sm>
void handleInitializedT(Sm& sm) {
    if (sm.initialized()) {
        DIRECTNET_DUALLOG(8, "already initialized");
        return;
    }
    sm.handleVirtualIpStatus();
    sm.initializedIs(true);
}

template <typename Sm>
void handleSubnetRoutesT(Sm& sm, bool enabled) {
    const auto& tables = *sm.vrfVirtualIpStatusHelper()->allVrfVirtualIpStatus();
    for (const auto& table : Orb::objectsOf(tables.vrfVirtualIpStatus())) {
        table->subnetRouteEnabledIs(enabled);
    }
}

} // namespace

namespace Ipv4 {

ORB_DEFINE_TYPE(VirtualIpStatusSm)
ORB_REGISTER(VirtualIpStatusSm, VirtualIpStatusSm, unitVirtualIpStatusSm, 1)

void VirtualIpStatusSm::OrbVirtualIpStatus::onAttribute(Orb::AttributeId id, const void* key) {
    if (id == VirtualIp::VirtualIpStatus::virtualIpIntfStatusId) {
        owner()->handleVirtualIpStatus(Orb::keyAs<VirtualIp::VrfIpWithMaskPair>(key));
    } else if (id == VirtualIp::VirtualIpStatus::subnetRoutesId) {
        owner()->handleSubnetRoutes();
    }
}

void VirtualIpStatusSm::OrbVirtualIpStatus::notifierIs(
    Orb::Ptr<const VirtualIp::VirtualIpStatus> status) {
    InputReactor::notifierIs(std::move(status));
    owner()->handleSubnetRoutes();
}

VirtualIpStatusSm::VirtualIpStatusSm(Arguments arguments)
    : arguments_(std::move(arguments)), orbVirtualIpStatus_(this) {
    orbVirtualIpStatus_.notifierIs(virtualIpStatus());
    handleInitialized();
}

void VirtualIpStatusSm::handleInitialized() { handleInitializedT(*this); }

VirtualIpStatusSm::~VirtualIpStatusSm() { orbDoZombieReactors(true); }

void VirtualIpStatusSm::handleVirtualIpStatus(const VirtualIp::VrfIpWithMaskPair& key) {
    handleVirtualIpStatusT<Traits::IPv4>(*this, key);
    handleSubnetRoutes(); // the table may be new
}

void VirtualIpStatusSm::handleVirtualIpStatus() {
    handleVirtualIpStatusT<Traits::IPv4>(*this);
    handleSubnetRoutes();
}

void VirtualIpStatusSm::handleSubnetRoutes() {
    handleSubnetRoutesT(*this, virtualIpStatus()->subnetRoutes());
}

} // namespace Ipv4

namespace Ipv6 {

ORB_DEFINE_TYPE(VirtualIpStatusSm)
ORB_REGISTER(VirtualIpStatusSm, VirtualIpStatusSm, unitVirtualIpStatusSm, 0)

void VirtualIpStatusSm::OrbVirtualIpStatus::onAttribute(Orb::AttributeId id, const void* key) {
    if (id == VirtualIp::VirtualIp6Status::virtualIp6IntfStatusId) {
        owner()->handleVirtualIpStatus(Orb::keyAs<VirtualIp::VrfIpPair>(key));
    }
}

VirtualIpStatusSm::VirtualIpStatusSm(Arguments arguments)
    : arguments_(std::move(arguments)), orbVirtualIpStatus_(this) {
    orbVirtualIpStatus_.notifierIs(virtualIpStatus());
    handleInitialized();
}

void VirtualIpStatusSm::handleInitialized() { handleInitializedT(*this); }

VirtualIpStatusSm::~VirtualIpStatusSm() { orbDoZombieReactors(true); }

void VirtualIpStatusSm::handleVirtualIpStatus(const VirtualIp::VrfIpPair& key) {
    handleVirtualIpStatusT<Traits::IPv6>(*this, key);
}

void VirtualIpStatusSm::handleVirtualIpStatus() {
    handleVirtualIpStatusT<Traits::IPv6>(*this);
    handleSubnetRoutes();
}

void VirtualIpStatusSm::handleSubnetRoutes() { DIRECTNET_DUALLOG(8, "handleSubnetRoutes (Ipv6)"); }

} // namespace Ipv6

} // namespace Routing::DirectNet
