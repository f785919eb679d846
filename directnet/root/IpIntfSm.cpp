#include "directnet/root/IpIntfSm.h"

#include "directnet/model/Trace.h"
#include "platform/orb/attribute/DefineType.h"

namespace Routing::DirectNet {

ORB_DEFINE_TYPE(IpIntfSm)
ORB_REGISTER(IpIntfSm, IpIntfSm, unitDirectNet, 8)

namespace {

DIRECTNET_TRACE_UNIT("DirectNet");

/// A /31 and a /32 have none.
bool hasBroadcasts(const Lanx::IpAddrWithMask& address) {
    return !address.isZero() && address.len() <= 30;
}

} // namespace

void IpIntfSm::OrbIpIntfStatus::onAttribute(Orb::AttributeId id, const void* key) {
    using Status = Ip::IpIntfStatus;
    if (id == Status::activeAddrWithMaskId) {
        owner()->handleActiveAddress(notifier()->activeAddrWithMask());
    } else if (id == Status::directedBroadcastId) {
        owner()->handleDirectedBroadcast();
    } else if (id == Status::activeSecondaryWithMaskId) {
        owner()->handleSecondaryAddress(Orb::keyAs<Lanx::IpAddrWithMask>(key));
    }
}

IpIntfSm::IpIntfSm(Arguments arguments)
    : arguments_(std::move(arguments)), contributions_(intfId(), intfViaSetConfig(), intfBacklog()),
      orbIpIntfStatus_(this) {
    orbIpIntfStatus_.notifierIs(ipIntfStatus());
    handleInitialized();
}

IpIntfSm::~IpIntfSm() {
    orbDoZombieReactors(true);
    handleIntfDeletion();
}

void IpIntfSm::handleInitialized() {
    if (initialized()) {
        DIRECTNET_TRACE(8, *this, " already initialized");
        return;
    }
    initializedIs(true);
    handleActiveAddress(ipIntfStatus()->activeAddrWithMask());
    Orb::forEachKey(ipIntfStatus()->activeSecondaryWithMask(),
                    [this](const auto& address) { handleSecondaryAddress(address); });
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
        if (hasBroadcasts(address) && !room_.waits()) {
            contributions_.takeBroadcastReference(address, isPrimary);
        }
    };
    update(ipIntfStatus()->activeAddrWithMask(), true);
    Orb::forEachKey(ipIntfStatus()->activeSecondaryWithMask(),
                    [&](const auto& address) { update(address, false); });
}

void IpIntfSm::handleIntfDeletion() {
    DIRECTNET_TRACE(8, "handleIntfDeletion", " intf=", intfId());
    const auto secondaries = Orb::keysOf(ipIntfStatus()->activeSecondaryWithMask());
    if (!prevUnnumberedIntf()) {
        updateIntfIdsByPrefix(ipIntfStatus()->activeAddrWithMask(), true);
    }
    for (const Lanx::IpAddrWithMask& address : secondaries) {
        updateIntfIdsByPrefix(address, true);
    }
    // The status may have moved on from what was added, without a word that was still heard.
    for (const Lanx::IpAddrWithMask& address : Orb::keysOf(contributions_.held())) {
        if (!contributions_.held().find(address)->stays) {
            updateIntfIdsByPrefix(address, true);
        }
    }
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

void IpIntfSm::updateIntfIdsByPrefix(const Lanx::IpAddrWithMask& address, bool withdraw) {
    DIRECTNET_TRACE(8, "updateIntfIdsByPrefix", " intf=", intfId(), " addr=", address,
                    " withdraw=", withdraw);
    if (address.isZero()) {
        return;
    }
    if (withdraw) {
        contributions_.withdraw(address);
        updateBcastRoute(address, true);
        contributions_.giveReferencesBack(address);
        return;
    }
    contributions_.fetchAhead(address);
    const IntfViaSetKey key = viaSetKeyOrWait();
    if (!key) {
        return;
    }
    contributions_.add(address, key);
    updateBcastRoute(address, false);
    contributions_.takeReference(address);
}

void IpIntfSm::updateBcastRoute(const Lanx::IpAddrWithMask& address, bool withdraw) {
    if (!hasBroadcasts(address)) {
        return;
    }
    const auto network = Lanx::IpPrefix::host(address.networkAddr());
    const auto broadcast = Lanx::IpPrefix::host(address.broadcastAddr());
    constexpr auto directed = Fib::RouteType::receiveBroadcast;
    constexpr auto plain = Fib::RouteType::dropDirectedBroadcast;
    if (withdraw) {
        contributions_.delPrefix(network, address, directed);
        contributions_.delPrefix(broadcast, address, plain);
        contributions_.delPrefix(broadcast, address, directed);
        return;
    }
    contributions_.fetchAhead(network);
    contributions_.fetchAhead(broadcast);
    const IntfViaSetKey key = viaSetKeyOrWait();
    if (!key) {
        return;
    }
    // The flag chooses the broadcast route's type only; its via set stays the same.
    const bool flag = ipIntfStatus()->directedBroadcast();
    contributions_.addPrefix(network, address, Fib::RouteType::receiveBroadcast,
                             key.rxBcastViaSetKey());
    contributions_.addPrefix(broadcast, address, flag ? directed : plain,
                             key.directedBcastViaSetKey());
    contributions_.delPrefix(broadcast, address, flag ? plain : directed);
}

IntfViaSetKey IpIntfSm::viaSetKeyOrWait() {
    const IntfViaSetKey key = contributions_.viaSetKey();
    if (!key) {
        room_.await(*this, contributions_.vias(), intfBacklog());
    }
    return key;
}

} // namespace Routing::DirectNet
