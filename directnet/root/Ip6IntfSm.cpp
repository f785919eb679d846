#include "directnet/root/Ip6IntfSm.h"

#include "platform/orb/attribute/DefineType.h"

namespace Routing::DirectNet {

ORB_DEFINE_TYPE(Ip6IntfSm)
ORB_REGISTER(Ip6IntfSm, Ip6IntfSm, unitDirectNet, 2)

void Ip6IntfSm::OrbIp6IntfStatus::onAttribute(Orb::AttributeId id, const void* key) {
    if (id == Ip6::IntfStatus::addrAttribute) {
        owner()->handleIp6Address(Orb::keyAs<Lanx::Ip6AddrWithMask>(key));
    }
}

Ip6IntfSm::Ip6IntfSm(Arguments arguments)
    : AddressMachine(arguments), arguments_(std::move(arguments)), orbIp6IntfStatus_(this) {
    orbIp6IntfStatus_.notifierIs(ip6IntfStatus());
    handleInitialized();
}

Ip6IntfSm::~Ip6IntfSm() {
    orbDoZombieReactors(true);
    handleIntfDeletion();
}

void Ip6IntfSm::applyStatus() {
    Orb::forEachKey(ip6IntfStatus()->addr(),
                    [this](const auto& address) { handleIp6Address(address); });
}

void Ip6IntfSm::withdrawStatus() {
    Orb::forEachKey(ip6IntfStatus()->addr(),
                    [this](const auto& address) { updateIntfIdsByPrefix(address, true); });
}

void Ip6IntfSm::handleIp6Address(const Lanx::Ip6AddrWithMask& address) {
    const bool found = !(ip6IntfStatus()->addr(address) == Ip6::AddressInfo());
    DIRECTNET_TRACE(8, "intf=", intfId(), " addr=", address, " found=", found);
    updateIntfIdsByPrefix(address, !found);
}

} // namespace Routing::DirectNet
