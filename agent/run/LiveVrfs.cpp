#include "agent/run/LiveVrfs.h"

#include <algorithm>
#include <utility>

namespace Agent {

LiveVrfs::LiveVrfs(const std::vector<VrfOption>& namespaces, Report report)
    : report_(std::move(report)) {
    for (const VrfOption& option : namespaces) {
        vrfs_.push_back({option.vrf, option.netns, {}, false, {}});
    }
}

VrfIds LiveVrfs::idsWith(const DevicePatch& config) const {
    VrfIds ids = ids_;
    ids.configure(config, up_);
    for (const Vrf& vrf : vrfs_) {
        if (vrf.isUp && vrf.isDevice()) {
            ids.take(vrf.name, vrf.device.table); // it keeps what it has where that is impossible
        }
    }
    return ids;
}

void LiveVrfs::namespaceDel(const Lanx::NamespaceName& netns) {
    devicesAre(netns, {});
    learned_.erase(netns);
    for (Vrf& vrf : vrfs_) {
        if (vrf.netns == netns) {
            takeDown(vrf);
        }
    }
}

void LiveVrfs::devicesAre(const Lanx::NamespaceName& netns,
                          const std::vector<Linux::VrfDevice>& devices) {
    std::vector<Linux::VrfDevice> known;
    std::erase_if(vrfs_, [&](Vrf& vrf) {
        if (!vrf.isDevice() || vrf.netns != netns) {
            return false;
        }
        if (std::ranges::find(devices, vrf.device) != devices.end()) {
            known.push_back(vrf.device);
            return false;
        }
        takeDown(vrf);
        return true;
    });
    for (const Linux::VrfDevice& device : devices) {
        if (std::ranges::find(known, device) == known.end()) {
            const L3::VrfName name{std::string(device.name.name())};
            vrfs_.push_back({name, netns, device, false, {}});
        }
    }
}

std::vector<LiveVrfs::Change> LiveVrfs::takeChanges() {
    std::vector<Change> changes = std::exchange(gone_, {});
    for (Vrf& vrf : vrfs_) {
        if (vrf.isUp || !learned_.contains(vrf.netns)) {
            continue;
        }
        std::string obstacle = vrf.isDevice() ? obstacleOf(vrf) : std::string();
        if (obstacle.empty()) {
            bringUp(vrf);
            changes.push_back({vrf.name, vrf.netns, vrf.device.index, true});
        } else if (obstacle != vrf.obstacle) {
            report_("VRF device " + vrf.name.value() + " of namespace " + vrf.netns.value()
                    + " is left out: " + obstacle);
            vrf.obstacle = std::move(obstacle);
        }
    }
    return changes;
}

void LiveVrfs::describe(const Change& change, VrfsPatch& patch) {
    VrfPatch& vrf = patch[change.name].make();
    if (!change.isUp) {
        vrf.status = Edit<VrfStatusPatch>::removal();
        if (!ids_.isConfigured(change.name)) {
            vrf.id = Edit<VrfId>::removal();
        }
        return;
    }
    vrf.id.make() = ids_.idOf(change.name);
    if (change.name != L3::VrfName::defaultVrf()) {
        VrfStatusPatch& status = vrf.status.make();
        status.active.make() = true;
        status.netns.make() = change.netns;
    }
}

const LiveVrfs::Vrf* LiveVrfs::findUp(const L3::VrfName& name) const {
    const auto found =
        std::ranges::find_if(vrfs_, [&](const Vrf& vrf) { return vrf.isUp && vrf.name == name; });
    return found == vrfs_.end() ? nullptr : &*found;
}

void LiveVrfs::takeDown(Vrf& vrf) {
    if (!vrf.isUp) {
        return;
    }
    vrf.isUp = false;
    up_.erase(vrf.name);
    ids_.release(vrf.name, !vrf.isDevice());
    gone_.push_back({vrf.name, vrf.netns, vrf.device.index, false});
}

void LiveVrfs::bringUp(Vrf& vrf) {
    vrf.isUp = true;
    vrf.obstacle.clear();
    up_.insert(vrf.name);
}

/// What keeps a device from being up. If nothing does, it has its id.
std::string LiveVrfs::obstacleOf(const Vrf& vrf) {
    const auto holder = std::ranges::find_if(vrfs_, [&](const Vrf& other) {
        return other.name == vrf.name && (other.isUp || !other.isDevice());
    });
    if (holder != vrfs_.end()) {
        return "its name is that of "
               + (holder->isDevice() ? "a VRF device of namespace " + holder->netns.value()
                                     : "the VRF of namespace " + holder->netns.value());
    }
    if (ids_.take(vrf.name, vrf.device.table)) {
        return {};
    }
    const std::string id = std::to_string(vrf.device.table);
    const auto taken = ids_.holder(VrfId(vrf.device.table));
    return taken ? "id " + id + " is taken by VRF " + taken->value()
                 : "its table " + id + " cannot be an id";
}

} // namespace Agent
