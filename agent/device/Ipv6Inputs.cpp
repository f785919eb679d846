#include "agent/device/Ipv6Inputs.h"

namespace Agent {

void Ipv6Inputs::apply(const Edit<Ipv6Patch>& patch) {
    if (patch.isRemoval()) {
        status_->vrfIp6IntfStatusDelAll();
    }
    if (const Ipv6Patch* vrfs = patch.value()) {
        for (const auto& [vrfName, edit] : *vrfs) {
            if (edit.isRemoval()) {
                status_->vrfIp6IntfStatusDel(vrfName);
            } else if (edit.value() != nullptr) {
                const Orb::Ptr<Ip6::VrfIp6IntfStatus> vrf(status_->vrfIp6IntfStatusIs(vrfName));
                if (vrf != nullptr) {
                    applyTo(*vrf, *edit.value());
                }
            }
        }
    }
}

void Ipv6Inputs::applyTo(Ip6::VrfIp6IntfStatus& vrf,
                         const MapPatch<Lanx::IntfId, Ipv6InterfacePatch>& patch) {
    for (const auto& [intfId, edit] : patch) {
        if (edit.isRemoval()) {
            vrf.intfStatusDel(intfId);
        } else if (edit.value() != nullptr) {
            const Orb::Ptr<Ip6::IntfStatus> status(vrf.intfStatusIs(intfId));
            if (status != nullptr) {
                applyTo(*status, *edit.value());
            }
        }
    }
}

void Ipv6Inputs::applyTo(Ip6::IntfStatus& interface, const Ipv6InterfacePatch& patch) {
    for (const auto& [address, edit] : patch) {
        if (edit.isRemoval()) {
            interface.addrDel(address);
        } else if (const bool* active = edit.value()) {
            interface.addrIs(address, Ip6::AddressInfo{*active});
        }
    }
}

} // namespace Agent
