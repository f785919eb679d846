#include "agent/device/Ipv4Inputs.h"

namespace Agent {

void Ipv4Inputs::apply(const Edit<Ipv4Patch>& patch) {
    if (patch.isRemoval()) {
        interfaces_.clear();
        status_->vrfIpIntfStatusDelAll();
    }
    if (const Ipv4Patch* vrfs = patch.value()) {
        for (const auto& [vrfName, edit] : *vrfs) {
            if (edit.isRemoval()) {
                interfaces_.erase(vrfName);
                status_->vrfIpIntfStatusDel(vrfName);
            } else if (edit.value() != nullptr) {
                applyTo(vrfName, *edit.value());
            }
        }
    }
}

void Ipv4Inputs::applyTo(const L3::VrfName& vrfName, const VrfPatch& patch) {
    status_->vrfIpIntfStatusIs(vrfName);
    for (const auto& [intfId, edit] : patch) {
        // Looked up for each interface: another patch may be applied from inside a notification.
        const Orb::Ptr<Ip::VrfIpIntfStatus> vrf(status_->vrfIpIntfStatusIs(vrfName));
        if (vrf == nullptr) {
            continue;
        }
        if (edit.isRemoval()) {
            interfaces_[vrfName].erase(intfId);
            vrf->ipIntfStatusDel(intfId);
        } else if (edit.value() != nullptr) {
            const Orb::Ptr<Ip::IpIntfStatus> status(vrf->ipIntfStatusIs(intfId));
            if (status != nullptr) {
                interfaces_[vrfName].tryInsert(intfId).first->apply(*edit.value(), *status);
            }
        }
    }
}

} // namespace Agent
