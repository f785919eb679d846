#include "agent/install/InstallLinks.h"

namespace Agent {

void InstallLinks::apply(const Linux::LinkMessage& message) {
    const auto known = links_.find(message.index);
    if (known != links_.end() && index(known->second.name) == message.index) {
        indexes_.erase(known->second.name);
    }
    if (message.removed) {
        links_.erase(message.index);
        settings_.erase(message.index);
        return;
    }
    links_[message.index] = {message.name, message.isUp(), message.vrfDevice(), message.vrfTable,
                             generation_};
    indexes_[message.name] = message.index;
}

void InstallLinks::apply(const ProxySettingMessage& message) {
    Setting& setting = settings_[message.link];
    setting.proxyNdp = message.proxyNdp.value_or(setting.proxyNdp);
    setting.forwarding = message.forwarding.value_or(setting.forwarding);
}

void InstallLinks::endListing() {
    for (auto link = links_.begin(); link != links_.end();) {
        if (link->second.generation == generation_) {
            ++link;
            continue;
        }
        if (index(link->second.name) == link->first) {
            indexes_.erase(link->second.name);
        }
        settings_.erase(link->first);
        link = links_.erase(link);
    }
}

int InstallLinks::index(Lanx::IntfId name) const {
    const auto found = indexes_.find(name);
    return found == indexes_.end() ? 0 : found->second;
}

bool InstallLinks::isUp(int index) const {
    const auto found = links_.find(index);
    return found != links_.end() && found->second.isUp;
}

std::uint32_t InstallLinks::vrfTable(int index) const {
    const auto link = links_.find(index);
    const auto device = link == links_.end() ? link : links_.find(link->second.vrfDevice);
    return device == links_.end() ? 0 : device->second.vrfTable;
}

Lanx::IntfId InstallLinks::name(int index) const {
    const auto found = links_.find(index);
    return found == links_.end() ? Lanx::IntfId() : found->second.name;
}

std::string InstallLinks::obstacle(Lanx::IntfId name) const {
    const auto setting = settings_.find(index(name));
    if (setting == settings_.end()) {
        return {};
    }
    const auto all = settings_.find(ProxySettingMessage::allLinks);
    const bool answers =
        setting->second.proxyNdp || (all != settings_.end() && all->second.proxyNdp);
    if (answers) {
        return setting->second.forwarding ? "" : "forwarding is off";
    }
    return setting->second.forwarding ? "proxy_ndp is off" : "proxy_ndp and forwarding are off";
}

} // namespace Agent
