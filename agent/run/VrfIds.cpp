#include "agent/run/VrfIds.h"

#include <algorithm>
#include <utility>

namespace Agent {

VrfIds::VrfId VrfIds::idOf(const L3::VrfName& name) {
    if (name == L3::VrfName::defaultVrf()) {
        return VrfId(0);
    }
    const auto configured = configured_.find(name);
    if (configured != configured_.end()) {
        return configured->second;
    }
    const auto [chosen, isNew] = chosen_.try_emplace(name);
    if (isNew) {
        VrfId::Number id = 1;
        while (isTaken(VrfId(id))) {
            ++id;
        }
        chosen->second = VrfId(id);
    }
    return chosen->second;
}

void VrfIds::configure(const DevicePatch& config, const std::set<L3::VrfName>& running) {
    const auto before = std::exchange(configured_, {});
    if (const VrfsPatch* vrfs = config.vrfs.value()) {
        for (const auto& [name, vrf] : *vrfs) {
            if (const VrfId* id = memberOf<&VrfPatch::id>(vrf).value()) {
                configured_.emplace(name, *id);
            }
        }
    }
    for (const auto& [name, id] : before) {
        if (!configured_.contains(name) && running.contains(name)) {
            chosen_.insert_or_assign(name, id);
        }
    }
    for (const auto& [name, id] : configured_) {
        chosen_.erase(name);
        std::erase_if(chosen_, [&, taken = id](const auto& entry) {
            return entry.second == taken && !running.contains(entry.first);
        });
    }
}

bool VrfIds::isTaken(VrfId id) const {
    const auto has = [id](const auto& entry) { return entry.second == id; };
    return id == VrfId::invalid() || std::any_of(configured_.begin(), configured_.end(), has)
           || std::any_of(chosen_.begin(), chosen_.end(), has);
}

} // namespace Agent
