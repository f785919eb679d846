#include "agent/linux/NamespaceView.h"

#include <algorithm>
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

NamespaceView::NamespaceView(Lanx::NamespaceName netns, L3::VrfName vrf)
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
        touched_[message.name];
    }
    return certain;
}

bool NamespaceView::apply(const Ipv4AddressMessage& message) {
    LinkModel* const model = find(message.index);
    if (model == nullptr) {
        return false;
    }
    touched_[model->link.name].ipv4.push_back(message.own());
    return message.removed ? model->ipv4.remove(message) : model->ipv4.add(message);
}

bool NamespaceView::apply(const Ipv6AddressMessage& message) {
    LinkModel* const model = find(message.index);
    if (model == nullptr) {
        return false;
    }
    auto& touched = touched_[model->link.name].ipv6;
    // An address may come back with another length or peer, and takes its old form along.
    if (const auto before = model->ipv6.ownOf(message.local.addr())) {
        touched.push_back(*before);
    }
    touched.push_back(message.own());
    if (message.removed) {
        model->ipv6.remove(message);
    } else {
        model->ipv6.add(message);
    }
    return true;
}

void NamespaceView::replaceAll(const ListedLinks& listed) {
    for (const auto& owner : owners_) {
        touchWhole(owner.first);
    }
    owners_.clear();
    links_.clear();
    for (const LinkMessage& link : listed.links) {
        LinkModel& model = links_[link.index];
        model.link = link;
        claimName(model);
    }
    const auto append = [this](const auto& address) {
        if (LinkModel* const model = find(address.index)) {
            model->append(address);
        }
    };
    std::for_each(listed.ipv4.begin(), listed.ipv4.end(), append);
    std::for_each(listed.ipv6.begin(), listed.ipv6.end(), append);
}

void NamespaceView::replaceOne(int index, const ListedLinks& listed) {
    erase(index);
    const auto isOfLink = [index](const auto& message) { return message.index == index; };
    const auto link = std::find_if(listed.links.begin(), listed.links.end(), isOfLink);
    if (link == listed.links.end()) {
        return;
    }
    LinkModel& model = links_[index];
    model.link = *link;
    const auto appendIfOfLink = [&](const auto& address) {
        if (isOfLink(address)) {
            model.append(address);
        }
    };
    std::for_each(listed.ipv4.begin(), listed.ipv4.end(), appendIfOfLink);
    std::for_each(listed.ipv6.begin(), listed.ipv6.end(), appendIfOfLink);
    claimName(model);
}

DevicePatch NamespaceView::takePatch() {
    MapPatch<Lanx::IntfId, KernelDevicePatch> kernel;
    MapPatch<Lanx::IntfId, Ipv4InterfacePatch> ipv4;
    MapPatch<Lanx::IntfId, Ipv6InterfacePatch> ipv6;
    const auto append = [](auto& section, Lanx::IntfId name, auto& entry) {
        if (entry.isGiven()) {
            section.append(name) = std::move(entry);
        }
    };
    for (auto& [name, touched] : touched_) {
        const auto owner = owners_.find(name);
        const LinkModel* model = owner == owners_.end() ? nullptr : &links_.at(owner->second);
        auto entries = published_[name].publish(model, std::move(touched));
        append(kernel, name, entries.kernel);
        append(ipv4, name, entries.ipv4);
        append(ipv6, name, entries.ipv6);
        if (!model) {
            published_.erase(name);
        }
    }
    touched_.clear();
    DevicePatch patch;
    const auto place = [](auto& section, const auto& key, auto& interfaces) {
        if (!interfaces.empty()) {
            interfaces.sort();
            section.make()[key].make() = std::move(interfaces);
        }
    };
    place(patch.kernel, netns_, kernel);
    place(patch.ipv4, vrf_, ipv4);
    place(patch.ipv6, vrf_, ipv6);
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

LinkModel* NamespaceView::find(int index) {
    const auto known = links_.find(index);
    return known == links_.end() ? nullptr : &known->second;
}

} // namespace Agent::Linux
