#include "directnet/root/IpIntfSm.h"

#include "platform/orb/attribute/DefineType.h"

namespace Routing::DirectNet {

ORB_DEFINE_TYPE(IpIntfSm)
ORB_REGISTER(IpIntfSm, IpIntfSm, unitDirectNet, 8)

namespace {

/// A /31 and a /32 have none.
bool hasBroadcasts(const Lanx::IpAddrWithMask& address) {
    return !address.isZero() && address.len() <= 30;
}

} // namespace

void IpIntfSm::OrbIpIntfStatus::onAttribute(Orb::AttributeId id, const void* key) {
    using Status = Ip::IpIntfStatus;
    if (id == Status::activeAddrWithMaskAttribute) {
        owner()->handleActiveAddress(notifier()->activeAddrWithMask());
    } else if (id == Status::directedBroadcastAttribute) {
        owner()->handleDirectedBroadcast();
    } else if (id == Status::activeSecondaryWithMaskAttribute) {
        owner()->handleSecondaryAddress(Orb::keyAs<Lanx::IpAddrWithMask>(key));
    }
}

IpIntfSm::IpIntfSm(Arguments arguments)
    : AddressMachine(arguments), arguments_(std::move(arguments)), orbIpIntfStatus_(this) {
    orbIpIntfStatus_.notifierIs(ipIntfStatus());
    handleInitialized();
}

IpIntfSm::~IpIntfSm() {
    orbDoZombieReactors(true);
    handleIntfDeletion();
}

void IpIntfSm::applyStatus() {
    handleActiveAddress(ipIntfStatus()->activeAddrWithMask());
    Orb::forEachKey(ipIntfStatus()->activeSecondaryWithMask(),
                    [this](const auto& address) { handleSecondaryAddress(address); });
}

void IpIntfSm::withdrawStatus() {
    const auto secondaries = Orb::keysOf(ipIntfStatus()->activeSecondaryWithMask());
    if (!prevUnnumberedIntf()) {
        updateIntfIdsByPrefix(ipIntfStatus()->activeAddrWithMask(), true);
    }
    for (const Lanx::IpAddrWithMask& address : secondaries) {
        updateIntfIdsByPrefix(address, true);
    }
}

void IpIntfSm::handleActiveAddress(const Lanx::IpAddrWithMask& address) {
    const Lanx::IpAddrWithMask previous = prevActiveAddrWithMask();
    DIRECTNET_TRACE(8, "handleActiveAddress", " intf=", intfId(), " addr=", address,
                    " prevAddr=", previous);
    const bool unnumbered = ipIntfStatus()->unnumberedIntfId() != Lanx::IntfId();
    if (address != previous && !prevUnnumberedIntf()) {
        updateIntfIdsByPrefix(previous, true);
    }
    if (!unnumbered) {
        updateIntfIdsByPrefix(address, false);
    }
    prevUnnumberedIntfIs(unnumbered);
    prevActiveAddrWithMaskIs(address);
}

void IpIntfSm::handleSecondaryAddress(const Lanx::IpAddrWithMask& address) {
    const bool inUse = ipIntfStatus()->activeSecondaryWithMask(address);
    updateIntfIdsByPrefix(address, !inUse);
}

void IpIntfSm::handleDirectedBroadcast() {
    DIRECTNET_TRACE(8, "handleDirectedBroadcast", " intf=", intfId());
    // No reference keeps the broadcasts of an address that is not added itself. Those of an
    // unnumbered interface's address are taken back by nobody, so they hold theirs for good.
    const auto update = [this](const Lanx::IpAddrWithMask& address, bool isPrimary) {
        updateBcastRoute(address, false);
        withdrawFormerBroadcast(address);
        if (hasBroadcasts(address) && !waitsForRoom()) {
            contributions().takeBroadcastReference(address, isPrimary);
        }
    };
    update(ipIntfStatus()->activeAddrWithMask(), true);
    Orb::forEachKey(ipIntfStatus()->activeSecondaryWithMask(),
                    [&](const auto& address) { update(address, false); });
}

void IpIntfSm::handleRoom() {
    if (ipIntfStatus()->unnumberedIntfId() == Lanx::IntfId()) {
        updateIntfIdsByPrefix(ipIntfStatus()->activeAddrWithMask(), false);
    }
    for (const Lanx::IpAddrWithMask& address :
         Orb::keysOf(ipIntfStatus()->activeSecondaryWithMask())) {
        if (ipIntfStatus()->activeSecondaryWithMask(address)) {
            updateIntfIdsByPrefix(address, false);
        }
    }
}

void IpIntfSm::updateBcastRoute(const Lanx::IpAddrWithMask& address, bool withdraw) {
    using Contribution = IntfBacklog::Contribution;
    if (!hasBroadcasts(address)) {
        return;
    }
    const auto broadcast = Lanx::IpPrefix::host(address.broadcastAddr());
    const Contribution network{Lanx::IpPrefix::host(address.networkAddr()), RouteKinds::network};
    if (withdraw) {
        contributions().withdraw(address, {network,
                                           {broadcast, RouteKinds::broadcast},
                                           {broadcast, RouteKinds::forwardedBroadcast}});
        return;
    }
    const IntfViaSetKey viaSets = viaSetKeyOrWait();
    if (!viaSets) {
        return;
    }
    contributions().add(address, viaSets, {network, {broadcast, broadcastKind(true)}});
    if (contributions().holds(address)) {
        withdrawFormerBroadcast(address); // one that is new has none
    }
}

void IpIntfSm::withdrawFormerBroadcast(const Lanx::IpAddrWithMask& address) {
    if (hasBroadcasts(address)) {
        contributions().withdraw(
            address, {{Lanx::IpPrefix::host(address.broadcastAddr()), broadcastKind(false)}});
    }
}

const RouteKind& IpIntfSm::broadcastKind(bool present) const {
    return ipIntfStatus()->directedBroadcast() == present ? RouteKinds::forwardedBroadcast
                                                          : RouteKinds::broadcast;
}

} // namespace Routing::DirectNet
