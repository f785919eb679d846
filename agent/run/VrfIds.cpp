#include "agent/run/VrfIds.h"

#include <algorithm>
#include <utility>

#include "platform/vrf/VrfId.h"

namespace Agent {

VrfIds::Number VrfIds::idOf(const L3::VrfName& name) {
    if (name == L3::VrfName::defaultVrf()) {
        return 0;
    }
    const auto configured = configured_.find(name);
    if (configured != configured_.end()) {
        return configured->second;
    }
    const auto [chosen, isNew] = chosen_.try_emplace(name, 0);
    if (isNew) {
        Number id = 1;
        while (isTaken(id)) {
            ++id;
        }
        chosen->second = id;
    }
    return chosen->second;
}

void VrfIds::configure(const nlohmann::json& vrfs, const std::set<L3::VrfName>& running) {
    const auto before = std::exchange(configured_, {});
    for (const auto& item : vrfs.items()) {
        const auto id = item.value().find("id");
        if (id != item.value().end()) {
            configured_.emplace(L3::VrfName(item.key()), id->get<Number>());
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

bool VrfIds::isTaken(Number id) const {
    const auto has = [id](const auto& entry) { return entry.second == id; };
    return id == Vrf::VrfIdMap::VrfId::invalid().value()
           || std::any_of(configured_.begin(), configured_.end(), has)
           || std::any_of(chosen_.begin(), chosen_.end(), has);
}

} // namespace Agent
