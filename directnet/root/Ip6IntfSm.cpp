#include "directnet/root/Ip6IntfSm.h"

#include "directnet/model/Trace.h"
#include "platform/orb/attribute/DefineType.h"

namespace Routing::DirectNet {

ORB_DEFINE_TYPE(Ip6IntfSm)
ORB_REGISTER(Ip6IntfSm, Ip6IntfSm, unitDirectNet, 2)

namespace {
DIRECTNET_TRACE_UNIT("DirectNet");
} // namespace

void Ip6IntfSm::OrbIp6IntfStatus::onAttribute(Orb::AttributeId id, const void* key) {
    if (id == Ip6::IntfStatus::addrId) {
        owner()->handleIp6Address(Orb::keyAs<Lanx::Ip6AddrWithMask>(key));
    }
}

Ip6IntfSm::Ip6IntfSm(Arguments arguments)
    : arguments_(std::move(arguments)), contributions_(intfId(), intfViaSetConfig(), intfBacklog()),
      orbIp6IntfStatus_(this) {
    orbIp6IntfStatus_.notifierIs(ip6IntfStatus());
    handleInitialized();
}

Ip6IntfSm::~Ip6IntfSm() {
    orbDoZombieReactors(true);
    handleIntfDeletion();
}

void Ip6IntfSm::handleInitialized() {
    if (initialized()) {
        DIRECTNET_TRACE(8, *this, " already initialized");
        return;
    }
    initializedIs(true);
    Orb::forEachKey(ip6IntfStatus()->addr(),
                    [this](const auto& address) { handleIp6Address(address); });
}

void Ip6IntfSm::handleIp6Address(const Lanx::Ip6AddrWithMask& address) {
    const bool found = !(ip6IntfStatus()->addr(address) == Ip6::AddressInfo());
    DIRECTNET_TRACE(8, "intf=", intfId(), " addr=", address, " found=", found);
    updateIntfIdsByPrefix(address, !found);
}

void Ip6IntfSm::handleIntfDeletion() {
    DIRECTNET_TRACE(8, "handleIntfDeletion", " intf=", intfId());
    Orb::forEachKey(ip6IntfStatus()->addr(),
                    [this](const auto& address) { updateIntfIdsByPrefix(address, true); });
    // The status may have moved on from what was added, without a word that was still heard.
    for (const Lanx::Ip6AddrWithMask& address : Orb::keysOf(contributions_.held())) {
        updateIntfIdsByPrefix(address, true);
    }
}

void Ip6IntfSm::handleRoom() {
    Orb::forEachKey(ip6IntfStatus()->addr(),
                    [this](const auto& address) { handleIp6Address(address); });
}

void Ip6IntfSm::updateIntfIdsByPrefix(const Lanx::Ip6AddrWithMask& address, bool withdraw) {
    if (address.isZero() || address.isLinkLocal()) {
        return;
    }
    DIRECTNET_TRACE(8, "updateIntfIdsByPrefix", " intf=", intfId(), " addr=", address,
                    " withdraw=", withdraw);
    if (withdraw) {
        contributions_.withdraw(address);
        contributions_.giveReferencesBack(address);
        return;
    }
    contributions_.fetchAhead(address);
    const IntfViaSetKey key = contributions_.viaSetKey();
    if (!key) {
        room_.await(*this, contributions_.vias(), intfBacklog());
        return;
    }
    contributions_.add(address, key);
    contributions_.takeReference(address);
}

} // namespace Routing::DirectNet
