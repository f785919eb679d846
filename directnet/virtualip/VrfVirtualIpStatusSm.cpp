#include "directnet/virtualip/VrfVirtualIpStatusSm.h"

#include <vector>

#include "directnet/model/DefineFamilyType.h"
#include "directnet/model/Trace.h"
#include "platform/orb/container/Keys.h"

namespace Routing::DirectNet {

namespace {

DIRECTNET_TRACE_UNIT("VrfVirtualIpStatusSm");

template <typename Family>
bool hasSubnet(const typename Family::AddrWithMask& address) {
    return VirtualIpTraits<Family>::hasSubnets && address.len() < Family::hostLen;
}

/// One (virtual address, interface) pair. `nested` is the address's nested machine; a pair without
/// one, or whose machine is going, is absent.
template <typename Sm>
void handleVirtualIpIntfStatusT(Sm& sm, typename Sm::OrbVirtualIpIntfStatusSm* nested,
                                const typename Sm::Key& key, Lanx::IntfId intfId) {
    const auto address = Sm::Virtual::addrWithMask(key);
    DIRECTNET_DUALLOG(8, "vrfName= ", sm.table().name(), ", addr= ", address, ", intfId= ", intfId);
    if (Sm::yieldsNothing(address)) {
        DIRECTNET_DUALLOG(8, "Address is zero or link is local");
        return;
    }
    const auto* entry = sm.table().virtualIp(key);
    if (nested != nullptr && !nested->orbMarkedForDeletion() && entry != nullptr
        && entry->intfId(intfId)) {
        DIRECTNET_DUALLOG(7, "create receive route");
        sm.addContributions(*nested, intfId, address);
    } else {
        DIRECTNET_DUALLOG(7, "delete receive route");
        sm.withdrawContributions(nested, intfId, address);
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
template <typename Sm>
void handleVirtualIpIntfStatusDeletionT(Sm& sm, typename Sm::OrbVirtualIpIntfStatusSm& nested) {
    const auto intfIds = Orb::keysOf(nested.contributesOn());
    DIRECTNET_DUALLOG(8, "vrfName= ", sm.table().name(), ", intfIds=", intfIds.size());
    for (const Lanx::IntfId intfId : intfIds) {
        handleVirtualIpIntfStatusT(sm, &nested, nested.fwkKey(), intfId);
    }
}

} // namespace

// The table.

template <typename Family>
void VrfVirtualIpStatusSm<Family>::OrbVrfVirtualIpStatus::onAttribute(Orb::AttributeId id,
                                                                      const void* attributeKey) {
    VrfVirtualIpStatusSm& sm = *this->owner();
    if (id == Table::virtualIpAttribute) {
        const Key& key = Orb::keyAs<Key>(attributeKey);
        if (const auto* virtualIp = this->notifier()->virtualIp(key)) {
            sm.virtualIpIntfStatusSmIs(Orb::Ptr(virtualIp));
        } else {
            sm.virtualIpIntfStatusSmDel(key);
        }
        sm.handleVrfVirtualIpStatus(key);
    } else if (id == Table::subnetRouteEnabledAttribute) {
        sm.handleSubnetRouteEnabled();
    }
}

template <typename Family>
void VrfVirtualIpStatusSm<Family>::OrbVrfVirtualIpStatus::notifierIs(Orb::Ptr<const Table> table) {
    Reactor::notifierIs(std::move(table));
    VrfVirtualIpStatusSm& sm = *this->owner();
    const auto& virtualIps = this->notifier()->virtualIp();
    for (const auto& virtualIp : Orb::objectsOf(virtualIps)) {
        sm.virtualIpIntfStatusSmIs(virtualIp);
    }
    std::vector<Key> gone;
    for (const auto& nested : sm.virtualIpIntfStatusSm()) {
        if (!virtualIps.contains(nested->fwkKey())) {
            gone.push_back(nested->fwkKey());
        }
    }
    for (const Key& key : gone) {
        sm.virtualIpIntfStatusSmDel(key);
    }
    sm.handleSubnetRouteEnabled();
}

template <typename Family>
void VrfVirtualIpStatusSm<Family>::handleVrfVirtualIpStatus(const Key& key) {
    handleVrfVirtualIpStatusT(*this, key);
}

template <typename Family>
void VrfVirtualIpStatusSm<Family>::handleVrfVirtualIpStatus() {
    handleVrfVirtualIpStatusT(*this);
}

// One address.

template <typename Family>
VrfVirtualIpStatusSm<Family>::OrbVirtualIpIntfStatusSm::OrbVirtualIpIntfStatusSm(
    VrfVirtualIpStatusSm* sm, Orb::Ptr<const IntfStatus> status)
    : Member(sm) {
    this->attach(std::move(status));
}

template <typename Family>
void VrfVirtualIpStatusSm<Family>::OrbVirtualIpIntfStatusSm::onAttribute(Orb::AttributeId id,
                                                                         const void* key) {
    if (id == IntfStatus::intfIdAttribute) {
        this->owner()->handleVirtualIpIntfStatus(this->fwkKey(), Orb::keyAs<Lanx::IntfId>(key));
    }
}

template <typename Family>
void VrfVirtualIpStatusSm<Family>::OrbVirtualIpIntfStatusSm::notifierIs(
    Orb::Ptr<const IntfStatus> status) {
    Member::notifierIs(std::move(status));
    for (const Lanx::IntfId intfId : Orb::keysOf(contributesOn_)) {
        if (!this->notifier()->intfId(intfId)) {
            this->owner()->handleVirtualIpIntfStatus(this->fwkKey(), intfId);
        }
    }
}

template <typename Family>
void VrfVirtualIpStatusSm<Family>::OrbVirtualIpIntfStatusSm::orbDoZombieReactors(bool zombie) {
    const bool goes = zombie && !this->orbMarkedForDeletion();
    Member::orbDoZombieReactors(zombie);
    if (goes) {
        handleVirtualIpIntfStatusDeletion();
    }
}

template <typename Family>
void VrfVirtualIpStatusSm<Family>::OrbVirtualIpIntfStatusSm::handleVirtualIpIntfStatusDeletion() {
    handleVirtualIpIntfStatusDeletionT(*this->owner(), *this);
}

// One address on one interface.

template <typename Family>
void VrfVirtualIpStatusSm<Family>::handleVirtualIpIntfStatus(const Key& key, Lanx::IntfId intfId) {
    handleVirtualIpIntfStatusT(*this, virtualIpIntfStatusSm(key), key, intfId);
}

template <typename Family>
void VrfVirtualIpStatusSm<Family>::addContributions(OrbVirtualIpIntfStatusSm& nested,
                                                    Lanx::IntfId intfId,
                                                    const AddrWithMask& address) {
    const IntfViaSetKey viaSets = viaSetKeyOrWait(intfId);
    if (!viaSets) {
        return;
    }
    this->intfBacklog()->addToIntfIdsByPrefix(viaSets, address,
                                              {{address.hostPrefix(), RouteKinds::address}}, true);
    if (hasSubnet<Family>(address) && this->table().subnetRouteEnabled()) {
        addSubnet(viaSets, address);
    }
    if (nested.contributesOn_.tryInsert(intfId).second) {
        ivskStatus()->incIntfVskRefcount(intfId);
    }
}

template <typename Family>
void VrfVirtualIpStatusSm<Family>::withdrawContributions(OrbVirtualIpIntfStatusSm* nested,
                                                         Lanx::IntfId intfId,
                                                         const AddrWithMask& address) {
    this->intfBacklog()->delFromIntfIdsByPrefix(
        intfId, address, {{address.hostPrefix(), RouteKinds::address}}, true);
    if (hasSubnet<Family>(address)) {
        delSubnet(intfId, address); // whatever the flag says now, it may have been set before
    }
    if (nested != nullptr && nested->contributesOn_.erase(intfId)) {
        this->intfViaSetConfig()->releaseViaSetKey(intfId, *ivskStatus());
    }
}

template <typename Family>
IntfViaSetKey VrfVirtualIpStatusSm<Family>::viaSetKeyOrWait(Lanx::IntfId intfId) {
    const Orb::Ptr<IntfBacklog>& backlog = this->intfBacklog();
    const IntfViaSetKey viaSets =
        this->intfViaSetConfig()->findOrCreateViaSetKey(intfId, backlog->vrfId(), *ivskStatus());
    if (!viaSets) {
        room_.await(*this, this->intfViaSetConfig()->getViaConfig(Family::af), backlog);
    }
    return viaSets;
}

// Subnets.

template <typename Family>
void VrfVirtualIpStatusSm<Family>::addSubnet(const IntfViaSetKey& viaSets,
                                             const AddrWithMask& address) {
    this->intfBacklog()->addToIntfIdsByPrefix(viaSets, address,
                                              {{address.subnet(), RouteKinds::subnet}}, true);
}

template <typename Family>
void VrfVirtualIpStatusSm<Family>::delSubnet(Lanx::IntfId intfId, const AddrWithMask& address) {
    this->intfBacklog()->delFromIntfIdsByPrefix(intfId, address,
                                                {{address.subnet(), RouteKinds::subnet}}, true);
}

template <typename Family>
void VrfVirtualIpStatusSm<Family>::handleSubnetRouteEnabled() {
    if constexpr (!Virtual::hasSubnets) {
        DIRECTNET_DUALLOG(8, "handleSubnetRouteEnabled (Ipv6)");
        return;
    }
    const auto& table = this->table();
    for (const auto& virtualIp : Orb::objectsOf(table.virtualIp())) {
        const Key key = virtualIp->fwkKey();
        const AddrWithMask address = Virtual::addrWithMask(key);
        if (!hasSubnet<Family>(address) || yieldsNothing(address)) {
            continue;
        }
        // Whoever watches the vias may change anything in the middle, so each step looks again.
        Orb::forEachKey(virtualIp->intfId(), [&](Lanx::IntfId intfId) {
            if (!table.subnetRouteEnabled()) {
                delSubnet(intfId, address);
            } else if (table.virtualIp(key) == virtualIp.get() && virtualIp->intfId(intfId)) {
                if (const IntfViaSetKey viaSets = viaSetKeyOrWait(intfId); !!viaSets) {
                    addSubnet(viaSets, address);
                }
            }
        });
    }
}

// Start and end.

template <typename Family>
VrfVirtualIpStatusSm<Family>::VrfVirtualIpStatusSm(Arguments arguments)
    : VrfVirtualIpArguments<Family>(std::move(arguments)), orbVrfVirtualIpStatus_(this) {
    newIvskStatus(Family::af);
    orbVrfVirtualIpStatus_.notifierIs(Orb::Ptr<const VrfVirtualIpStatus<Family>>(&this->table()));
    handleInitialized();
}

template <typename Family>
VrfVirtualIpStatusSm<Family>::~VrfVirtualIpStatusSm() {
    VrfVirtualIpStatusSm::orbDoZombieReactors(true);
}

template <typename Family>
void VrfVirtualIpStatusSm<Family>::handleInitialized() {
    if (initialized()) {
        DIRECTNET_DUALLOG(8, "vrfName= ", this->table().name(), " already initialized");
        return;
    }
    handleVrfVirtualIpStatus();
    initializedIs(true);
}

template <typename Family>
void VrfVirtualIpStatusSm<Family>::orbDoZombieReactors(bool zombie) {
    Entity::orbDoZombieReactors(zombie);
    if (zombie) {
        virtualIpIntfStatusSmDelAll();
        this->intfViaSetConfig()->delViaSetKeyAll(*ivskStatus());
    }
}

DIRECTNET_DEFINE_FAMILY_TYPE(VrfVirtualIpStatusSm)
ORB_REGISTER(Ipv6, Ipv6::VrfVirtualIpStatusSm, unitVrfVirtualIpStatusSm, 0)
ORB_REGISTER(Ipv4, Ipv4::VrfVirtualIpStatusSm, unitVrfVirtualIpStatusSm, 1)

} // namespace Routing::DirectNet
