#include "agent/run/LiveDevice.h"

#include <algorithm>
#include <utility>

#include "agent/patch/DocumentError.h"
#include "agent/patch/Merge.h"
#include "platform/orb/value/Error.h"

namespace Agent {

namespace {

/// The VRFs that a configuration names.
const VrfsPatch& vrfsNamedIn(const DevicePatch& config) {
    static const VrfsPatch none;
    return config.vrfs.value() == nullptr ? none : *config.vrfs.value();
}

bool hasId(const DevicePatch& config, const L3::VrfName& name) {
    const Edit<VrfPatch>* vrf = vrfsNamedIn(config).find(name);
    return vrf != nullptr && memberOf<&VrfPatch::id>(*vrf).isGiven();
}

std::string failureOf(const L3::VrfName& vrf, const std::string& why) {
    return "VRF " + vrf.value() + ": " + why;
}

} // namespace

LiveDevice::LiveDevice(DeviceInputs& inputs, Orb::Ptr<Orb::Clock> clock,
                       std::vector<VrfOption> vrfs, const DevicePatch& config, Report report)
    : inputs_(inputs), clock_(std::move(clock)), options_(std::move(vrfs)),
      report_(std::move(report)) {
    configure(config);
    follow({L3::VrfName::defaultVrf(), Lanx::NamespaceName::defaultNamespace()});
    if (!options_.empty()) {
        std::set<std::string> names;
        for (const VrfOption& vrf : options_) {
            names.insert(vrf.netns.value());
        }
        watch_.emplace(std::move(names));
        watcher_.emplace(watch_->fd(), clock_, [this] {
            watch_->onReadable();
            handleEvents();
        });
        handleEvents();
    }
}

void LiveDevice::configure(const DevicePatch& config) {
    DevicePatch patch = difference(config_, config);
    VrfIds ids = ids_;
    ids.configure(config, published_);
    patch.vrfs = configuredVrfs(config, ids);
    inputs_.apply(patch);
    config_ = config;
    ids_ = std::move(ids);
}

/// The ids of all VRFs that the present or the new configuration names.
Edit<VrfsPatch> LiveDevice::configuredVrfs(const DevicePatch& config, VrfIds& ids) const {
    Edit<VrfsPatch> vrfs;
    for (const VrfsPatch* named : {&vrfsNamedIn(config_), &vrfsNamedIn(config)}) {
        for (const auto& member : *named) {
            const L3::VrfName& name = member.first;
            if (name == L3::VrfName::defaultVrf()) {
                continue; // published with what is learned of it, like any VRF that runs
            }
            const bool hasOne = hasId(config, name) || published_.contains(name);
            vrfs.make()[name].make().id =
                hasOne ? Edit<VrfIds::VrfId>::to(ids.idOf(name)) : Edit<VrfIds::VrfId>::removal();
        }
    }
    return vrfs;
}

bool LiveDevice::isLearned() const {
    return std::all_of(followers_.begin(), followers_.end(),
                       [](const auto& entry) { return entry.second->isLearned(); });
}

bool LiveDevice::isSettled() const {
    return std::all_of(followers_.begin(), followers_.end(), [](const auto& entry) {
        return entry.second->isSettled() || !entry.second->failure().empty();
    });
}

std::vector<std::string> LiveDevice::failures() const {
    std::vector<std::string> failures;
    for (const auto& [vrf, follower] : followers_) {
        if (!follower->failure().empty()) {
            failures.push_back(failureOf(vrf, follower->failure()));
        }
    }
    return failures;
}

void LiveDevice::handleEvents() {
    for (const Linux::NamespaceWatch::Event& event : watch_->takeEvents()) {
        for (const VrfOption& vrf : options_) {
            if (vrf.netns.value() == event.name) {
                event.appeared ? follow(vrf) : unfollow(vrf);
            }
        }
    }
}

void LiveDevice::follow(const VrfOption& vrf) {
    followers_[vrf.vrf] = std::make_unique<NamespaceFollower>(
        vrf, clock_,
        [this](NamespaceFollower& follower, DevicePatch patch) {
            apply(follower, std::move(patch));
        },
        [this, name = vrf.vrf](const std::string& why) { report_(failureOf(name, why)); });
}

void LiveDevice::unfollow(const VrfOption& vrf) {
    const auto found = followers_.find(vrf.vrf);
    if (found == followers_.end()) {
        return;
    }
    DevicePatch patch = found->second->withdraw();
    followers_.erase(found);
    if (published_.erase(vrf.vrf) == 0) {
        return;
    }
    VrfPatch& entry = patch.vrfs.make()[vrf.vrf].make();
    entry.status = Edit<VrfStatusPatch>::removal();
    if (!hasId(config_, vrf.vrf)) {
        entry.id = Edit<VrfIds::VrfId>::removal();
    }
    applyOrReport(patch);
    if (observer_ != nullptr) {
        observer_->onNamespaceGone(vrf.netns);
    }
}

std::optional<VrfPlace> LiveDevice::place(const L3::VrfName& vrf) const {
    if (!published_.contains(vrf)) {
        return std::nullopt;
    }
    return VrfPlace{.netns = followers_.at(vrf)->vrf().netns};
}

std::vector<L3::VrfName> LiveDevice::vrfsOf(const Lanx::NamespaceName& netns) const {
    std::vector<L3::VrfName> vrfs;
    for (const auto& [vrf, follower] : followers_) {
        if (published_.contains(vrf) && follower->vrf().netns == netns) {
            vrfs.push_back(vrf);
        }
    }
    return vrfs;
}

void LiveDevice::apply(NamespaceFollower& follower, DevicePatch patch) {
    const bool isNew = published_.insert(follower.vrf().vrf).second;
    if (isNew) {
        publish(follower, patch);
    }
    applyOrReport(patch);
    if (observer_ != nullptr && isNew) {
        observer_->onNamespace(follower.vrf().netns);
    } else if (observer_ != nullptr) {
        observer_->onChange(follower.vrf().netns);
    }
}

void LiveDevice::publish(const NamespaceFollower& follower, DevicePatch& patch) {
    const VrfOption& vrf = follower.vrf();
    VrfPatch& entry = patch.vrfs.make()[vrf.vrf].make();
    entry.id.make() = ids_.idOf(vrf.vrf);
    if (vrf.vrf != L3::VrfName::defaultVrf()) {
        VrfStatusPatch& status = entry.status.make();
        status.active.make() = true;
        status.netns.make() = vrf.netns;
    }
}

void LiveDevice::applyOrReport(const DevicePatch& patch) {
    try {
        inputs_.apply(patch);
    } catch (const DocumentError& error) {
        report_("the kernel's " + error.pointer() + ": " + error.what());
    } catch (const Orb::Error& error) {
        report_(error.what());
    }
}

} // namespace Agent
