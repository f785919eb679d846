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
        while (!isFree(VrfId(id))) {
            ++id;
        }
        chosen->second.id = VrfId(id);
    }
    chosen->second.isInUse = true;
    return chosen->second.id;
}

std::optional<VrfIds::VrfId> VrfIds::take(const L3::VrfName& name, std::uint32_t table) {
    if (const auto configured = configured_.find(name); configured != configured_.end()) {
        return configured->second;
    }
    const VrfId id(table);
    const auto present = holder(id);
    if (id == VrfId::invalid() || (present && *present != name)) {
        return std::nullopt;
    }
    std::erase_if(chosen_, [id](const auto& entry) { return entry.second.id == id; });
    chosen_.insert_or_assign(name, Chosen{id, true});
    return id;
}

void VrfIds::release(const L3::VrfName& name, bool remember) {
    if (!remember) {
        chosen_.erase(name);
    } else if (const auto chosen = chosen_.find(name); chosen != chosen_.end()) {
        chosen->second.isInUse = false;
    }
}

std::optional<VrfIds::VrfId> VrfIds::find(const L3::VrfName& name) const {
    if (name == L3::VrfName::defaultVrf()) {
        return VrfId(0);
    }
    if (const auto configured = configured_.find(name); configured != configured_.end()) {
        return configured->second;
    }
    const auto chosen = chosen_.find(name);
    return chosen == chosen_.end() ? std::nullopt : std::optional(chosen->second.id);
}

std::optional<L3::VrfName> VrfIds::holder(VrfId id) const {
    for (const auto& [name, taken] : configured_) {
        if (taken == id) {
            return name;
        }
    }
    for (const auto& [name, chosen] : chosen_) {
        if (chosen.id == id && chosen.isInUse) {
            return name;
        }
    }
    return std::nullopt;
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
            chosen_.insert_or_assign(name, Chosen{id, true});
        }
    }
    for (const auto& [name, id] : configured_) {
        chosen_.erase(name);
        std::erase_if(chosen_, [taken = id](const auto& entry) {
            return entry.second.id == taken && !entry.second.isInUse;
        });
    }
}

/// Whether nobody has it and nobody may come back for it.
bool VrfIds::isFree(VrfId id) const {
    return id != VrfId::invalid() && !holder(id)
           && std::ranges::none_of(chosen_,
                                   [id](const auto& entry) { return entry.second.id == id; });
}

} // namespace Agent
