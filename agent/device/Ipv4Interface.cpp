#include "agent/device/Ipv4Interface.h"

namespace Agent {

void Ipv4Interface::apply(const Ipv4InterfacePatch& patch, Ip::IpIntfStatus& status) {
    using Patch = Ipv4InterfacePatch;
    const Address newAddress = after<&Patch::address>(patch, address_);
    const Lanx::IntfId unnumbered = after<&Patch::unnumbered>(patch, status.unnumberedIntfId());
    const SecondaryUse newOwnUse =
        !newAddress ? SecondaryUse() : useAfter(newAddress, patch.secondary, status);
    const bool secondaryWins = !!unnumbered && newOwnUse == true;

    SecondaryUses uses;
    for (const Address& address : touched(patch.secondary, newAddress, status)) {
        const bool hidden = !!address && address == newAddress && !secondaryWins;
        uses.emplace_back(address,
                          hidden ? SecondaryUse() : useAfter(address, patch.secondary, status));
    }
    address_ = newAddress;
    ownUse_ = newOwnUse;

    // From here on whoever is told may have this interface go; only the status is held.

    status.unnumberedIntfIdIs(unnumbered);
    status.directedBroadcastIs(after<&Patch::directedBroadcast>(patch, status.directedBroadcast()));
    for (const auto& [address, listed] : uses) {
        if (!listed) {
            status.activeSecondaryWithMaskDel(address);
        } else if (!*listed) {
            status.activeSecondaryWithMaskIs(address, false);
        }
    }
    status.activeAddrWithMaskIs(secondaryWins ? Address() : newAddress);
    for (const auto& [address, listed] : uses) {
        if (listed == true) {
            status.activeSecondaryWithMaskIs(address, true);
        }
    }
}

Ipv4Interface::SecondaryUse Ipv4Interface::use(const Address& address,
                                               const Ip::IpIntfStatus& status) const {
    if (isAddress(address)) {
        return ownUse_;
    }
    const bool* published = status.activeSecondaryWithMask().find(address);
    return published == nullptr ? SecondaryUse() : *published;
}

Ipv4Interface::SecondaryUse Ipv4Interface::useAfter(const Address& address,
                                                    const SecondaryEdit& edit,
                                                    const Ip::IpIntfStatus& status) const {
    if (edit.isRemoval()) {
        return {};
    }
    if (const auto* members = edit.value()) {
        if (const Edit<bool>* member = members->find(address)) {
            const bool* inUse = member->value();
            return inUse == nullptr ? SecondaryUse() : *inUse;
        }
    }
    return use(address, status);
}

std::vector<Ipv4Interface::Address> Ipv4Interface::touched(const SecondaryEdit& edit,
                                                           const Address& newAddress,
                                                           const Ip::IpIntfStatus& status) const {
    std::vector<Address> addresses{address_, newAddress};
    if (edit.isRemoval()) {
        for (const auto& entry : status.activeSecondaryWithMask()) {
            addresses.push_back(entry.key());
        }
    } else if (const auto* members = edit.value()) {
        for (const auto& member : *members) {
            addresses.push_back(member.first);
        }
    }
    return addresses;
}

} // namespace Agent
