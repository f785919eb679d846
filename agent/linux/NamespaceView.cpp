#include "agent/linux/NamespaceView.h"

#include <algorithm>
#include <linux/if.h>
#include <utility>

namespace Agent::Linux {

namespace {

/// Whether the link may have lost IPv6 addresses without a word.
bool leavesIpv6InDoubt(const LinkMessage& before, const LinkMessage& now) {
    return before.master != now.master || before.fitsIpv6() != now.fitsIpv6();
}

bool goesDown(const LinkMessage& before, const LinkMessage& now) {
    return !now.isUp() && (before.isUp() || (now.changed & IFF_UP) != 0);
}

template <typename Key, typename T>
void appendGiven(MapPatch<Key, T>& patch, const Key& key, Edit<T> edit) {
    if (edit.isGiven()) {
        patch.append(key) = std::move(edit);
    }
}

} // namespace

NamespaceView::NamespaceView(Lanx::NamespaceName netns, L3::VrfName vrf, bool vrfDevices)
    : netns_(std::move(netns)), vrfDevices_(vrfDevices) {
    vrfs_.emplace(0, std::move(vrf));
}

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
    const bool moved = vrfDeviceOf(model.link) != vrfDeviceOf(message);
    const bool certain = moved || !leavesIpv6InDoubt(model.link, message);
    const bool whole = moved || model.link.isUp() != message.isUp();
    if (moved || goesDown(model.link, message)) {
        model.ipv6 = {}; // those that the kernel keeps it announces when it uses them again
    }
    if (model.link.name != message.name) {
        releaseName(model);
        model.link = message;
        claimName(model);
    } else {
        model.link = message;
        touched_[message.name].whole |= whole;
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
    devicesTouched_ = true;
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

std::optional<std::vector<VrfDevice>> NamespaceView::takeVrfDevices() {
    if (!vrfDevices_ || !std::exchange(devicesTouched_, false)) {
        return std::nullopt;
    }
    std::vector<VrfDevice> devices;
    for (const auto& [index, model] : links_) {
        if (model.link.vrfTable != 0) {
            devices.push_back({index, model.link.name, model.link.vrfTable});
        }
    }
    std::ranges::sort(devices, {}, &VrfDevice::index);
    if (devices == toldDevices_) {
        return std::nullopt;
    }
    toldDevices_ = devices;
    return devices;
}

void NamespaceView::vrfIs(int device, std::optional<L3::VrfName> vrf) {
    for (const auto& [index, model] : links_) {
        if (vrfDeviceOf(model.link) == device) {
            touchWhole(model.link.name);
        }
    }
    if (vrf) {
        vrfs_.insert_or_assign(device, *std::move(vrf));
    } else {
        vrfs_.erase(device);
    }
}

DevicePatch NamespaceView::takePatch() {
    MapPatch<Lanx::IntfId, KernelDevicePatch> kernel;
    AddressPatches addresses;
    for (auto& [name, touched] : touched_) {
        const LinkModel* const model = owner(name);
        PublishedInterface& published = published_[name];
        appendGiven(kernel, name, published.publishDevice(model));
        publishAddresses(name, model, published, std::move(touched), addresses);
        if (model == nullptr) {
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
    for (auto& [vrf, changed] : addresses) {
        place(patch.ipv4, vrf, changed.ipv4);
        place(patch.ipv6, vrf, changed.ipv6);
    }
    return patch;
}

void NamespaceView::publishAddresses(Lanx::IntfId name, const LinkModel* model,
                                     PublishedInterface& published,
                                     PublishedInterface::Touched touched,
                                     AddressPatches& patches) const {
    const auto append = [&](const L3::VrfName& vrf, PublishedInterface::Addresses entries) {
        AddressPatch& patch = patches[vrf];
        appendGiven(patch.ipv4, name, std::move(entries.ipv4));
        appendGiven(patch.ipv6, name, std::move(entries.ipv6));
    };
    const L3::VrfName* const vrf = vrfOf(model);
    const std::optional<L3::VrfName> before = published.vrf();
    if (before && (vrf == nullptr || *vrf != *before)) {
        append(*before, published.withdrawAddresses());
        touched.whole = true;
    }
    if (vrf != nullptr) {
        append(*vrf, published.publishAddresses(*vrf, *model, std::move(touched)));
    }
}

std::optional<NamedLink> NamespaceView::named(Lanx::IntfId name) const {
    const LinkModel* const model = owner(name);
    if (model == nullptr) {
        return std::nullopt;
    }
    const LinkMessage& link = model->link;
    NamedLink named{link.isUp(), link.isRunning(), vrfDeviceOf(link), {}};
    const bool isPublished = vrfOf(model) != nullptr;
    if (!isPublished) {
        model->ipv4.forEach([&](const auto& address) {
            named.unpublished.push_back({address, model->ipv4.isSecondary(address), {}});
        });
    }
    if (!isPublished || !link.isUp()) {
        model->ipv6.forEach([&](const auto& address) {
            named.unpublished.push_back({address, false, {}});
        });
    }
    model->ipv6.forEachUnused([&](const auto& address, std::string_view obstacle) {
        named.unpublished.push_back({address, false, obstacle});
    });
    std::ranges::sort(named.unpublished, {}, &NamedLink::Address::address);
    // One that the link has with several peers counts once.
    const auto repeated =
        std::unique(named.unpublished.begin(), named.unpublished.end(),
                    [](const auto& a, const auto& b) { return a.address == b.address; });
    named.unpublished.erase(repeated, named.unpublished.end());
    return named;
}

std::vector<Lanx::IntfId> NamespaceView::names() const {
    std::vector<Lanx::IntfId> names;
    for (const auto& owner : owners_) {
        names.push_back(owner.first);
    }
    return names;
}

const LinkModel* NamespaceView::owner(Lanx::IntfId name) const {
    const auto found = owners_.find(name);
    return found == owners_.end() ? nullptr : &links_.at(found->second);
}

/// Null for no link, and while the link's VRF device has no VRF.
const L3::VrfName* NamespaceView::vrfOf(const LinkModel* model) const {
    if (model == nullptr) {
        return nullptr;
    }
    const auto found = vrfs_.find(vrfDeviceOf(model->link));
    return found == vrfs_.end() ? nullptr : &found->second;
}

void NamespaceView::claimName(const LinkModel& model) {
    devicesTouched_ = devicesTouched_ || model.link.vrfTable != 0;
    owners_[model.link.name] = model.link.index;
    touchWhole(model.link.name);
}

void NamespaceView::releaseName(const LinkModel& model) {
    devicesTouched_ = devicesTouched_ || model.link.vrfTable != 0;
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
