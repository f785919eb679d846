#include "agent/device/Ipv4Inputs.h"

namespace Agent {

void Ipv4Inputs::apply(const Change<Ipv4Patch>& patch) {
    if (patch.isRemoval()) {
        interfaces_.clear();
        status_->vrfIpIntfStatusDelAll();
    }
    if (const Ipv4Patch* vrfs = patch.value()) {
        for (const auto& [vrfName, change] : *vrfs) {
            if (change.isRemoval()) {
                interfaces_.erase(vrfName);
                status_->vrfIpIntfStatusDel(vrfName);
            } else if (change.value() != nullptr) {
                applyTo(vrfName, *change.value());
            }
        }
    }
}

void Ipv4Inputs::applyTo(const L3::VrfName& vrfName, const VrfPatch& patch) {
    Ip::VrfIpIntfStatus* vrf = status_->vrfIpIntfStatusIs(vrfName);
    auto& interfaces = interfaces_[vrfName];
    for (const auto& [intfId, change] : patch) {
        if (change.isRemoval()) {
            interfaces.erase(intfId);
            vrf->ipIntfStatusDel(intfId);
        } else if (change.value() != nullptr) {
            Ipv4Interface& interface = *interfaces.tryInsert(intfId).first;
            interface.apply(*change.value(), *vrf->ipIntfStatusIs(intfId));
        }
    }
}

} // namespace Agent
