#include "agent/device/Ipv4Interface.h"

#include <algorithm>

namespace Agent {

void Ipv4Interface::apply(const Ipv4InterfacePatch& patch, Ip::IpIntfStatus& status) {
    const Address newAddress = patch.address.after(address_, {});
    const Lanx::IntfId unnumbered = patch.unnumbered.after(status.unnumberedIntfId(), {});
    const Listing newOwn =
        !newAddress ? Listing() : listingAfter(newAddress, patch.secondary, status);
    const bool secondaryWins = !!unnumbered && newOwn == true;

    Listings listings;
    for (const Address& address : touched(patch.secondary, newAddress, status)) {
        const bool hidden = !!address && address == newAddress && !secondaryWins;
        listings.emplace_back(address,
                              hidden ? Listing() : listingAfter(address, patch.secondary, status));
    }
    address_ = newAddress;
    ownListing_ = newOwn;

    // From here on whoever is told may have this interface go; only the status is held.

    status.unnumberedIntfIdIs(unnumbered);
    status.directedBroadcastIs(patch.directedBroadcast.after(status.directedBroadcast(), false));
    for (const auto& [address, listed] : listings) {
        if (!listed) {
            status.activeSecondaryWithMaskDel(address);
        } else if (!*listed) {
            status.activeSecondaryWithMaskIs(address, false);
        }
    }
    status.activeAddrWithMaskIs(secondaryWins ? Address() : newAddress);
    for (const auto& [address, listed] : listings) {
        if (listed == true) {
            status.activeSecondaryWithMaskIs(address, true);
        }
    }
}

Ipv4Interface::Listing Ipv4Interface::listing(const Address& address,
                                              const Ip::IpIntfStatus& status) const {
    if (isAddress(address)) {
        return ownListing_;
    }
    const bool* published = status.activeSecondaryWithMask().find(address);
    return published == nullptr ? Listing() : *published;
}

Ipv4Interface::Listing Ipv4Interface::listingAfter(const Address& address,
                                                   const SecondaryChange& change,
                                                   const Ip::IpIntfStatus& status) const {
    if (change.isRemoval()) {
        return {};
    }
    if (const auto* members = change.value()) {
        const auto member = std::lower_bound(
            members->begin(), members->end(), address,
            [](const auto& entry, const Address& wanted) { return entry.first < wanted; });
        if (member != members->end() && member->first == address) {
            const bool* listed = member->second.value();
            return listed == nullptr ? Listing() : *listed;
        }
    }
    return listing(address, status);
}

std::vector<Ipv4Interface::Address> Ipv4Interface::touched(const SecondaryChange& change,
                                                           const Address& newAddress,
                                                           const Ip::IpIntfStatus& status) const {
    std::vector<Address> addresses{address_, newAddress};
    if (change.isRemoval()) {
        for (const auto& entry : status.activeSecondaryWithMask()) {
            addresses.push_back(entry.key());
        }
    } else if (const auto* members = change.value()) {
        for (const auto& member : *members) {
            addresses.push_back(member.first);
        }
    }
    return addresses;
}

} // namespace Agent
