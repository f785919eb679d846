#include "agent/linux/NamespaceView.h"

#include <linux/if.h>
#include <utility>

namespace Agent::Linux {

namespace {

/// A change of these makes the kernel withdraw, restore or re-examine IPv6 addresses, in part
/// without a word.
constexpr std::uint32_t stateFlags = IFF_UP | IFF_RUNNING | IFF_LOWER_UP;

bool leavesIpv6InDoubt(const LinkMessage& before, const LinkMessage& now) {
    return (((before.flags ^ now.flags) | now.changed) & stateFlags) != 0
           || before.master != now.master || before.fitsIpv6() != now.fitsIpv6();
}

} // namespace

NamespaceView::NamespaceView(std::string netns, std::string vrf)
    : netns_(std::move(netns)), vrf_(std::move(vrf)) {}

bool NamespaceView::apply(const LinkMessage& message) {
    if (message.removed) {
        erase(message.index);
        return true;
    }
    auto [known, isNew] = links_.try_emplace(message.index);
    LinkModel& model = known->second;
    if (isNew) {
        // A link comes without addresses; each is announced after it.
        model.link = message;
        claimName(model);
        return true;
    }
    bool certain = !leavesIpv6InDoubt(model.link, message);
    bool renamed = model.link.name != message.name;
    if (renamed) {
        releaseName(model);
    }
    model.link = message;
    if (renamed) {
        claimName(model);
    } else {
        changes_[message.name];
    }
    return certain;
}

bool NamespaceView::apply(const AddressMessage& message) {
    auto known = links_.find(message.index);
    if (known == links_.end()) {
        return false;
    }
    LinkModel& model = known->second;
    auto& touched = changes_[model.link.name].addresses;
    if (message.local.family == AF_INET) {
        touched.push_back(message.own());
        return message.removed ? model.ipv4.remove(message) : model.ipv4.add(message);
    }
    // An address may come back with another length or peer, and takes its old form along.
    if (auto before = model.ipv6.ownOf(message.local)) {
        touched.push_back(*before);
    }
    touched.push_back(message.own());
    if (message.removed) {
        model.ipv6.remove(message);
    } else {
        model.ipv6.add(message);
    }
    return true;
}

void NamespaceView::replaceAll(const std::vector<LinkMessage>& links,
                               const std::vector<AddressMessage>& addresses) {
    for (const auto& owner : owners_) {
        touchWhole(owner.first);
    }
    owners_.clear();
    links_.clear();
    for (const LinkMessage& link : links) {
        LinkModel& model = links_[link.index];
        model.link = link;
        claimName(model);
    }
    for (const AddressMessage& address : addresses) {
        auto known = links_.find(address.index);
        if (known != links_.end()) {
            known->second.append(address);
        }
    }
}

void NamespaceView::replaceOne(int index, const std::optional<LinkMessage>& link,
                               const std::vector<AddressMessage>& addresses) {
    erase(index);
    if (!link) {
        return;
    }
    LinkModel& model = links_[index];
    model.link = *link;
    for (const AddressMessage& address : addresses) {
        if (address.index == index) {
            model.append(address);
        }
    }
    claimName(model);
}

nlohmann::json NamespaceView::takePatch() {
    auto patch = nlohmann::json::object();
    for (auto& [name, changes] : changes_) {
        auto owner = owners_.find(name);
        const LinkModel* model = owner == owners_.end() ? nullptr : &links_.at(owner->second);
        auto patches = published_[name].publish(name, model, std::move(changes));
        if (patches.kernel) {
            patch["kernel"][netns_][name] = std::move(*patches.kernel);
        }
        if (patches.ipv4) {
            patch["ipv4"][vrf_][name] = std::move(*patches.ipv4);
        }
        if (patches.ipv6) {
            patch["ipv6"][vrf_][name] = std::move(*patches.ipv6);
        }
        if (!model) {
            published_.erase(name);
        }
    }
    changes_.clear();
    return patch;
}

void NamespaceView::claimName(const LinkModel& model) {
    owners_[model.link.name] = model.link.index;
    touchWhole(model.link.name);
}

void NamespaceView::releaseName(const LinkModel& model) {
    auto owner = owners_.find(model.link.name);
    if (owner != owners_.end() && owner->second == model.link.index) {
        owners_.erase(owner);
        touchWhole(model.link.name);
    }
}

void NamespaceView::erase(int index) {
    auto known = links_.find(index);
    if (known != links_.end()) {
        releaseName(known->second);
        links_.erase(known);
    }
}

} // namespace Agent::Linux
