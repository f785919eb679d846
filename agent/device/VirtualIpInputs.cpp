#include "agent/device/VirtualIpInputs.h"

namespace Agent {

namespace {

template <typename IntfStatus>
void applyInterfaces(IntfStatus& virtualIp, const InterfaceSetPatch& patch) {
    for (const auto& [intfId, edit] : patch) {
        const bool* carries = edit.value();
        if (carries != nullptr && *carries) {
            virtualIp.intfIdIs(intfId, true);
        } else if (edit.isGiven()) {
            virtualIp.intfIdDel(intfId);
        }
    }
}

} // namespace

template <typename Traits>
void VirtualIpInputs<Traits>::apply(const Edit<VirtualIpPatch<Address>>& patch) {
    if (patch.isRemoval()) {
        while (!addresses_.empty()) {
            clear(L3::VrfName(addresses_.begin()->first));
        }
    }
    if (const auto* vrfs = patch.value()) {
        for (const auto& [vrfName, edit] : *vrfs) {
            if (edit.isRemoval()) {
                clear(vrfName);
            } else if (edit.value() != nullptr) {
                applyTo(vrfName, *edit.value());
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
    for (const auto& [address, edit] : patch) {
        // Looked up for each address: another patch may be applied from inside a notification.
        if (edit.isRemoval()) {
            addresses_[vrfName].erase(address);
            Traits::remove(*status_, Key(vrfName, address));
        } else if (edit.value() != nullptr) {
            addresses_[vrfName].insert(address);
            const Orb::Ptr status(Traits::add(*status_, Key(vrfName, address)));
            if (status != nullptr) {
                applyInterfaces(*status, *edit.value());
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
