#include "directnet/virtualip/VrfVirtualIpStatusSm.h"

#include "directnet/model/Trace.h"
#include "platform/orb/attribute/DefineType.h"
#include "platform/orb/container/Keys.h"

namespace Routing::DirectNet {

namespace {

DIRECTNET_TRACE_UNIT("VrfVirtualIpStatusSm");

// A virtual address is never leaked from another VRF.
constexpr Vrf::VrfIdMap::VrfId local = Vrf::VrfIdMap::VrfId::invalid();

template <typename AddrWithMask>
bool yieldsNothing(const AddrWithMask& address) {
    return address.isZero() || address.isLinkLocal();
}

template <typename Family>
bool hasSubnet(const typename Family::AddrWithMask& address) {
    return VirtualIpTraits<Family>::hasSubnets && address.len() < Family::hostLen;
}

template <typename Sm, typename AddrWithMask>
void addSubnet(Sm& sm, Lanx::IntfId intfId, const AddrWithMask& address, Rib::ViaSetKey viaSetKey) {
    sm.intfBacklog()->addToIntfIdsByPrefix(intfId, address.subnet(), address,
                                           Fib::RouteType::connected, viaSetKey, local, true);
}

template <typename Sm, typename AddrWithMask>
void delSubnet(Sm& sm, Lanx::IntfId intfId, const AddrWithMask& address) {
    sm.intfBacklog()->delFromIntfIdsByPrefix(intfId, address.subnet(), address,
                                             Fib::RouteType::connected, local, true);
}

template <typename Family, typename Sm>
void addContributions(Sm& sm, typename Sm::OrbVirtualIpIntfStatusSm& nested, Lanx::IntfId intfId,
                      const typename Family::AddrWithMask& address) {
    const IntfViaSetKey viaSetKey = sm.viaSetKeyOrWait(intfId);
    if (!viaSetKey) {
        return;
    }
    sm.intfBacklog()->addToIntfIdsByPrefix(intfId, address.hostPrefix(), address,
                                           Fib::RouteType::receive, viaSetKey.rxViaSetKey(), local,
                                           true);
    if (hasSubnet<Family>(address) && sm.table().subnetRouteEnabled()) {
        addSubnet(sm, intfId, address, viaSetKey.viaSetKey());
    }
    if (!nested.references().holds(intfId)) {
        nested.references().take(intfId, intfId, *sm.ivskStatus());
    }
}

template <typename Family, typename Sm>
void withdrawContributions(Sm& sm, typename Sm::OrbVirtualIpIntfStatusSm* nested,
                           Lanx::IntfId intfId, const typename Family::AddrWithMask& address) {
    sm.intfBacklog()->delFromIntfIdsByPrefix(intfId, address.hostPrefix(), address,
                                             Fib::RouteType::receive, local, true);
    if (hasSubnet<Family>(address)) {
        delSubnet(sm, intfId, address); // whatever the flag says now, it may have been set before
    }
    if (nested != nullptr) {
        nested->references().giveBack(intfId, intfId, *sm.intfViaSetConfig(), *sm.ivskStatus());
    }
}

/// One (virtual address, interface) pair. `nested` is the address's nested machine; a pair without
/// one, or whose machine is going, is absent.
template <typename Family, typename Sm>
void handleVirtualIpIntfStatusT(Sm& sm, typename Sm::OrbVirtualIpIntfStatusSm* nested,
                                const typename Sm::Key& key, Lanx::IntfId intfId) {
    const auto address = VirtualIpTraits<Family>::addrWithMask(key);
    DIRECTNET_DUALLOG(8, "vrfName= ", sm.table().name(), ", addr= ", address, ", intfId= ", intfId);
    if (yieldsNothing(address)) {
        DIRECTNET_DUALLOG(8, "Address is zero or link is local");
        return;
    }
    const auto* entry = sm.table().virtualIp(key);
    if (nested != nullptr && !nested->orbMarkedForDeletion() && entry != nullptr
        && entry->intfId(intfId)) {
        DIRECTNET_DUALLOG(7, "create receive route");
        addContributions<Family>(sm, *nested, intfId, address);
    } else {
        DIRECTNET_DUALLOG(7, "delete receive route");
        withdrawContributions<Family>(sm, nested, intfId, address);
    }
}

template <typename Sm>
void handleVrfVirtualIpStatusT(Sm& sm, const typename Sm::Key& key) {
    const Orb::Ptr entry(sm.table().virtualIp(key));
    if (entry == nullptr) {
        return;
    }
    DIRECTNET_DUALLOG(8, "vrfName= ", sm.table().name(), ", intfIds=", entry->intfId().size());
    Orb::forEachKey(entry->intfId(),
                    [&](Lanx::IntfId intfId) { sm.handleVirtualIpIntfStatus(key, intfId); });
}

template <typename Sm>
void handleVrfVirtualIpStatusT(Sm& sm) {
    const auto& virtualIps = sm.table().virtualIp();
    DIRECTNET_DUALLOG(8, "vrfName= ", sm.table().name(), ", virtual IPs=", virtualIps.size());
    for (const auto& virtualIp : Orb::objectsOf(virtualIps)) {
        sm.handleVrfVirtualIpStatus(virtualIp->fwkKey());
    }
}

/// What the address contributed is withdrawn, which may be more than its object still lists.
template <typename Family, typename Sm>
void handleVirtualIpIntfStatusDeletionT(Sm& sm, typename Sm::OrbVirtualIpIntfStatusSm& nested) {
    const auto intfIds = Orb::keysOf(nested.references().taken());
    DIRECTNET_DUALLOG(8, "vrfName= ", sm.table().name(), ", intfIds=", intfIds.size());
    for (const Lanx::IntfId intfId : intfIds) {
        handleVirtualIpIntfStatusT<Family>(sm, &nested, nested.fwkKey(), intfId);
    }
}

} // namespace

template <typename Sm, typename Family>
void VrfVirtualIpMachine<Sm, Family>::handleInitialized() {
    if (self().initialized()) {
        DIRECTNET_DUALLOG(8, "vrfName= ", self().table().name(), " already initialized");
        return;
    }
    handleVrfVirtualIpStatus();
    self().initializedIs(true);
}

template <typename Sm, typename Family>
void VrfVirtualIpMachine<Sm, Family>::handleRoom() {
    handleVrfVirtualIpStatus();
}

template <typename Sm, typename Family>
IntfViaSetKey VrfVirtualIpMachine<Sm, Family>::viaSetKeyOrWait(Lanx::IntfId intfId) {
    const Orb::Ptr<IntfBacklog>& backlog = self().intfBacklog();
    const IntfViaSetKey key = self().intfViaSetConfig()->findOrCreateViaSetKey(
        intfId, backlog->vrfId(), *self().ivskStatus());
    if (!key) {
        room_.await(self(), self().intfViaSetConfig()->getViaConfig(Family::af), backlog);
    }
    return key;
}

template <typename Sm, typename Family>
void VrfVirtualIpMachine<Sm, Family>::handleVrfVirtualIpStatus(const Key& key) {
    handleVrfVirtualIpStatusT(self(), key);
}

template <typename Sm, typename Family>
void VrfVirtualIpMachine<Sm, Family>::handleVrfVirtualIpStatus() {
    handleVrfVirtualIpStatusT(self());
}

template <typename Sm, typename Family>
void VrfVirtualIpMachine<Sm, Family>::handleVirtualIpIntfStatus(const Key& key,
                                                                Lanx::IntfId intfId) {
    handleVirtualIpIntfStatusT<Family>(self(), self().virtualIpIntfStatusSm(key), key, intfId);
}

template <typename Sm, typename Family>
void VrfVirtualIpMachine<Sm, Family>::handleVirtualIpIntfStatusDeletion(
    OrbVirtualIpIntfStatusSm& nested) {
    handleVirtualIpIntfStatusDeletionT<Family>(self(), nested);
}

template <typename Sm, typename Family>
void VrfVirtualIpMachine<Sm, Family>::doReleaseAll() {
    self().virtualIpIntfStatusSmDelAll();
    self().intfViaSetConfig()->delViaSetKeyAll(*self().ivskStatus());
}

template class VrfVirtualIpMachine<Ipv4::VrfVirtualIpStatusSm, Traits::IPv4>;
template class VrfVirtualIpMachine<Ipv6::VrfVirtualIpStatusSm, Traits::IPv6>;

namespace Ipv4 {

ORB_DEFINE_TYPE(VrfVirtualIpStatusSm)
ORB_REGISTER(VrfVirtualIpStatusSm, VrfVirtualIpStatusSm, unitVrfVirtualIpStatusSm, 1)

VrfVirtualIpStatusSm::VrfVirtualIpStatusSm(Arguments arguments)
    : arguments_(std::move(arguments)), orbVrfVirtualIpStatus_(this) {
    newIvskStatus(Lanx::AddressFamily::ipv4);
    orbVrfVirtualIpStatus_.notifierIs(vrfVirtualIpStatus());
    handleInitialized();
}

VrfVirtualIpStatusSm::~VrfVirtualIpStatusSm() { VrfVirtualIpStatusSm::orbDoZombieReactors(true); }

void VrfVirtualIpStatusSm::orbDoZombieReactors(bool zombie) {
    Entity::orbDoZombieReactors(zombie);
    if (zombie) {
        doReleaseAll();
    }
}

void VrfVirtualIpStatusSm::handleSubnetRouteEnabled() {
    for (const auto& virtualIp : Orb::objectsOf(table().virtualIp())) {
        const Key key = virtualIp->vrfIpWithMask();
        const Lanx::IpAddrWithMask address = key.ipAddrWithMask();
        if (!hasSubnet<Traits::IPv4>(address) || yieldsNothing(address)) {
            continue;
        }
        // Whoever watches the vias may change anything in the middle, so each step looks again.
        Orb::forEachKey(virtualIp->intfId(), [&](Lanx::IntfId intfId) {
            if (!table().subnetRouteEnabled()) {
                delSubnet(*this, intfId, address);
            } else if (table().virtualIp(key) == virtualIp.get() && virtualIp->intfId(intfId)) {
                if (const IntfViaSetKey viaSetKey = viaSetKeyOrWait(intfId); !!viaSetKey) {
                    addSubnet(*this, intfId, address, viaSetKey.viaSetKey());
                }
            }
        });
    }
}

} // namespace Ipv4

namespace Ipv6 {

ORB_DEFINE_TYPE(VrfVirtualIpStatusSm)
ORB_REGISTER(VrfVirtualIpStatusSm, VrfVirtualIpStatusSm, unitVrfVirtualIpStatusSm, 0)

VrfVirtualIpStatusSm::VrfVirtualIpStatusSm(Arguments arguments)
    : arguments_(std::move(arguments)), orbVrfVirtualIpStatus_(this) {
    newIvskStatus(Lanx::AddressFamily::ipv6);
    orbVrfVirtualIpStatus_.notifierIs(vrfVirtualIp6Status());
    handleInitialized();
}

VrfVirtualIpStatusSm::~VrfVirtualIpStatusSm() { VrfVirtualIpStatusSm::orbDoZombieReactors(true); }

void VrfVirtualIpStatusSm::orbDoZombieReactors(bool zombie) {
    Entity::orbDoZombieReactors(zombie);
    if (zombie) {
        doReleaseAll();
    }
}

void VrfVirtualIpStatusSm::handleSubnetRouteEnabled() {
    DIRECTNET_DUALLOG(8, "handleSubnetRouteEnabled (Ipv6)");
}

} // namespace Ipv6

} // namespace Routing::DirectNet
