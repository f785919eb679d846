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
    auto& addresses = addresses_[vrfName];
    for (const auto& [address, change] : patch) {
        if (change.isRemoval()) {
            addresses.erase(address);
            Traits::remove(*status_, Key(vrfName, address));
        } else if (change.value() != nullptr) {
            addresses.insert(address);
            applyInterfaces(*Traits::add(*status_, Key(vrfName, address)), *change.value());
        }
    }
    if (addresses.empty()) {
        addresses_.erase(vrfName);
    }
}

template class VirtualIpInputs<VirtualIp4Traits>;
template class VirtualIpInputs<VirtualIp6Traits>;

} // namespace Agent
