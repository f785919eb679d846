#include "agent/device/VirtualIpInputs.h"

namespace Agent {

namespace {

template <typename IntfStatus>
void applyInterfaces(IntfStatus& virtualIp, const InterfaceSetPatch& patch) {
    for (const auto& [intfId, change] : patch) {
        const bool* carries = change.value();
        if (carries != nullptr && *carries) {
            virtualIp.intfIdIs(intfId, true);
        } else if (change.isGiven()) {
            virtualIp.intfIdDel(intfId);
        }
    }
}

} // namespace

template <typename Traits>
void VirtualIpInputs<Traits>::apply(const Change<VirtualIpPatch<Address>>& patch) {
    if (patch.isRemoval()) {
        while (!addresses_.empty()) {
            clear(L3::VrfName(addresses_.begin()->first));
        }
    }
    if (const auto* vrfs = patch.value()) {
        for (const auto& [vrfName, change] : *vrfs) {
            if (change.isRemoval()) {
                clear(vrfName);
            } else if (change.value() != nullptr) {
                applyTo(vrfName, *change.value());
            }
        }
    }
}

template <typename Traits>
void VirtualIpInputs<Traits>::clear(const L3::VrfName& vrfName) {
    if (const auto taken = addresses_.extract(vrfName)) {
        for (const Address& address : taken.mapped()) {
            Traits::remove(*status_, Key(vrfName, address));
        }
    }
}

template <typename Traits>
void VirtualIpInputs<Traits>::applyTo(const L3::VrfName& vrfName,
                                      const MapPatch<Address, InterfaceSetPatch>& patch) {
    for (const auto& [address, change] : patch) {
        // Looked up for each address: another patch may be applied from inside a notification.
        if (change.isRemoval()) {
            addresses_[vrfName].erase(address);
            Traits::remove(*status_, Key(vrfName, address));
        } else if (change.value() != nullptr) {
            addresses_[vrfName].insert(address);
            const Orb::Ptr status(Traits::add(*status_, Key(vrfName, address)));
            if (status != nullptr) {
                applyInterfaces(*status, *change.value());
            }
        }
    }
    const auto left = addresses_.find(vrfName);
    if (left != addresses_.end() && left->second.empty()) {
        addresses_.erase(left);
    }
}

template class VirtualIpInputs<VirtualIp4Traits>;
template class VirtualIpInputs<VirtualIp6Traits>;

} // namespace Agent
