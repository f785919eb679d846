#include "agent/device/Ipv6Inputs.h"

namespace Agent {

void Ipv6Inputs::apply(const Change<Ipv6Patch>& patch) {
    if (patch.isRemoval()) {
        status_->vrfIp6IntfStatusDelAll();
    }
    if (const Ipv6Patch* vrfs = patch.value()) {
        for (const auto& [vrfName, change] : *vrfs) {
            if (change.isRemoval()) {
                status_->vrfIp6IntfStatusDel(vrfName);
            } else if (change.value() != nullptr) {
                const Orb::Ptr<Ip6::VrfIp6IntfStatus> vrf(status_->vrfIp6IntfStatusIs(vrfName));
                if (vrf != nullptr) {
                    applyTo(*vrf, *change.value());
                }
            }
        }
    }
}

void Ipv6Inputs::applyTo(Ip6::VrfIp6IntfStatus& vrf,
                         const MapPatch<Lanx::IntfId, AddressPatch>& patch) {
    for (const auto& [intfId, change] : patch) {
        if (change.isRemoval()) {
            vrf.intfStatusDel(intfId);
        } else if (change.value() != nullptr) {
            const Orb::Ptr<Ip6::IntfStatus> status(vrf.intfStatusIs(intfId));
            if (status != nullptr) {
                applyTo(*status, *change.value());
            }
        }
    }
}

void Ipv6Inputs::applyTo(Ip6::IntfStatus& interface, const AddressPatch& patch) {
    for (const auto& [address, change] : patch) {
        if (change.isRemoval()) {
            interface.addrDel(address);
        } else if (const bool* active = change.value()) {
            interface.addrIs(address, Ip6::AddressInfo{*active});
        }
    }
}

} // namespace Agent
