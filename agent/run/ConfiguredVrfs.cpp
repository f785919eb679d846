#include "agent/run/ConfiguredVrfs.h"

namespace Agent {

namespace {

template <typename T>
void addKeys(const Edit<MapPatch<L3::VrfName, T>>& section, std::set<L3::VrfName>& names) {
    if (section.value() != nullptr) {
        for (const auto& member : *section.value()) {
            names.insert(member.first);
        }
    }
}

template <typename Prefix>
void addLeaks(const Edit<LeakPatch<Prefix>>& leaks, std::set<L3::VrfName>& names) {
    addKeys(leaks, names);
    if (leaks.value() == nullptr) {
        return;
    }
    for (const auto& source : *leaks.value()) {
        if (source.second.value() != nullptr) {
            for (const auto& prefix : *source.second.value()) {
                addKeys(prefix.second, names);
            }
        }
    }
}

} // namespace

std::set<L3::VrfName> vrfsNamedBy(const DevicePatch& config) {
    std::set<L3::VrfName> names;
    addKeys(config.vrfs, names);
    addKeys(config.ribWaits, names);
    addKeys(memberOf<&VirtualIpsPatch::ipv4>(config.virtualIps), names);
    addKeys(memberOf<&VirtualIpsPatch::ipv6>(config.virtualIps), names);
    addLeaks(memberOf<&LeaksPatch::ipv4>(config.leaks), names);
    addLeaks(memberOf<&LeaksPatch::ipv6>(config.leaks), names);
    return names;
}

} // namespace Agent
