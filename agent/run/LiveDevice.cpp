#include "agent/run/LiveDevice.h"

#include <algorithm>
#include <utility>

#include "agent/patch/DocumentError.h"
#include "agent/patch/Merge.h"
#include "agent/run/ConfiguredVrfs.h"
#include "platform/orb/value/Error.h"

namespace Agent {

namespace {

/// The VRFs that a configuration says something of.
const VrfsPatch& vrfSection(const DevicePatch& config) {
    static const VrfsPatch none;
    return config.vrfs.value() == nullptr ? none : *config.vrfs.value();
}

bool hasId(const DevicePatch& config, const L3::VrfName& name) {
    const Edit<VrfPatch>* vrf = vrfSection(config).find(name);
    return vrf != nullptr && memberOf<&VrfPatch::id>(*vrf).isGiven();
}

std::string failureOf(const L3::VrfName& vrf, const std::string& why) {
    return "VRF " + vrf.value() + ": " + why;
}

VrfOption ownNamespace() {
    return {L3::VrfName::defaultVrf(), Lanx::NamespaceName::defaultNamespace()};
}

std::vector<VrfOption> withOwnNamespace(std::vector<VrfOption> vrfs) {
    vrfs.insert(vrfs.begin(), ownNamespace());
    return vrfs;
}

} // namespace

LiveDevice::LiveDevice(DeviceInputs& inputs, Orb::Ptr<Orb::Clock> clock, Options options,
                       const DevicePatch& config, Report report)
    : inputs_(inputs), clock_(std::move(clock)), options_(std::move(options)),
      report_(std::move(report)), vrfs_(withOwnNamespace(options_.vrfs), report_) {
    configure(config);
    follow(ownNamespace());
    if (!options_.vrfs.empty()) {
        std::set<std::string> names;
        for (const VrfOption& vrf : options_.vrfs) {
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
    VrfIds ids = vrfs_.idsWith(config);
    patch.vrfs = configuredVrfs(config, ids);
    inputs_.apply(patch);
    config_ = config;
    vrfs_.idsAre(std::move(ids));
    applyElsewhere(takeVrfChanges());
}

/// The ids of all VRFs that the present or the new configuration says something of.
Edit<VrfsPatch> LiveDevice::configuredVrfs(const DevicePatch& config, VrfIds& ids) const {
    Edit<VrfsPatch> vrfs;
    for (const VrfsPatch* named : {&vrfSection(config_), &vrfSection(config)}) {
        for (const auto& member : *named) {
            const L3::VrfName& name = member.first;
            if (name == L3::VrfName::defaultVrf()) {
                continue; // published with what is learned of it, like any VRF that runs
            }
            const bool hasOne = hasId(config, name) || vrfs_.up().contains(name);
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
    for (const auto& entry : followers_) {
        const NamespaceFollower& follower = *entry.second;
        if (!follower.failure().empty()) {
            failures.push_back(failureOf(follower.vrf().vrf, follower.failure()));
        }
    }
    return failures;
}

Linux::NamespaceMonitor::Counts LiveDevice::counts() const {
    Linux::NamespaceMonitor::Counts counts = counted_;
    for (const auto& entry : followers_) {
        counts += entry.second->counts();
    }
    return counts;
}

void LiveDevice::handleEvents() {
    for (const Linux::NamespaceWatch::Event& event : watch_->takeEvents()) {
        for (const VrfOption& vrf : options_.vrfs) {
            if (vrf.netns.value() == event.name) {
                event.appeared ? follow(vrf) : unfollow(vrf);
            }
        }
    }
}

void LiveDevice::follow(const VrfOption& vrf) {
    followers_[vrf.netns] = std::make_unique<NamespaceFollower>(
        NamespaceFollower::Options{vrf, options_.vrfDevices}, clock_,
        [this](NamespaceFollower& follower) { handle(follower); },
        [this, name = vrf.vrf](const std::string& why) { report_(failureOf(name, why)); });
}

void LiveDevice::unfollow(const VrfOption& vrf) {
    const auto found = followers_.find(vrf.netns);
    if (found == followers_.end()) {
        return;
    }
    DevicePatch patch = found->second->withdraw();
    counted_ += found->second->counts();
    followers_.erase(found);
    vrfs_.namespaceDel(vrf.netns);
    const auto changes = takeVrfChanges();
    applyTo(vrf.netns, std::move(patch), changes);
    applyElsewhere(changes, vrf.netns);
    if (observer_ != nullptr) {
        observer_->onNamespaceGone(vrf.netns);
    }
}

void LiveDevice::handle(NamespaceFollower& follower) {
    const Lanx::NamespaceName netns = follower.vrf().netns;
    const bool isNew = vrfs_.namespaceIs(netns);
    if (const auto devices = follower.view().takeVrfDevices()) {
        vrfs_.devicesAre(netns, *devices);
    }
    const auto changes = takeVrfChanges();
    applyTo(netns, follower.view().takePatch(), changes);
    if (observer_ != nullptr && isNew) {
        observer_->onNamespace(netns);
    } else if (observer_ != nullptr && !changes.empty()) {
        observer_->onVrfs(netns);
    }
    applyElsewhere(changes, netns);
}

std::vector<LiveVrfs::Change> LiveDevice::takeVrfChanges() {
    auto changes = vrfs_.takeChanges();
    for (const LiveVrfs::Change& change : changes) {
        NamespaceFollower* const owner = follower(change.netns);
        if (owner != nullptr && change.device != 0) {
            owner->view().vrfIs(change.device,
                                change.isUp ? std::optional(change.name) : std::nullopt);
        }
    }
    return changes;
}

/// Applies what has changed in a namespace.
void LiveDevice::applyTo(const Lanx::NamespaceName& netns, DevicePatch patch,
                         const std::vector<LiveVrfs::Change>& changes) {
    for (const LiveVrfs::Change& change : changes) {
        if (change.netns == netns) {
            vrfs_.describe(change, patch.vrfs.make());
        }
    }
    if (isEmpty(patch)) {
        return;
    }
    try {
        inputs_.apply(patch);
    } catch (const DocumentError& error) {
        report_("the kernel's " + error.pointer() + ": " + error.what());
    } catch (const Orb::Error& error) {
        report_(error.what());
    }
}

/// VRF devices that got a name or an id that had been taken come up, wherever they are.
void LiveDevice::applyElsewhere(const std::vector<LiveVrfs::Change>& changes,
                                const std::optional<Lanx::NamespaceName>& done) {
    std::set<Lanx::NamespaceName> namespaces;
    for (const LiveVrfs::Change& change : changes) {
        if (change.netns != done && namespaces.insert(change.netns).second) {
            applyTo(change.netns, follower(change.netns)->view().takePatch(), changes);
            if (observer_ != nullptr) {
                observer_->onVrfs(change.netns);
            }
        }
    }
}

/// Null while the namespace is not followed.
NamespaceFollower* LiveDevice::follower(const Lanx::NamespaceName& netns) const {
    const auto found = followers_.find(netns);
    return found == followers_.end() ? nullptr : found->second.get();
}

std::optional<VrfPlace> LiveDevice::place(const L3::VrfName& vrf) const {
    const LiveVrfs::Vrf* const found = vrfs_.findUp(vrf);
    if (found == nullptr) {
        return std::nullopt;
    }
    return VrfPlace{found->netns, found->device.name, found->device.table};
}

std::vector<L3::VrfName> LiveDevice::vrfsOf(const Lanx::NamespaceName& netns) const {
    std::vector<L3::VrfName> names;
    for (const LiveVrfs::Vrf& vrf : vrfs_.vrfs()) {
        if (vrf.isUp && vrf.netns == netns) {
            names.push_back(vrf.name);
        }
    }
    return names;
}

std::vector<KnownVrf> LiveDevice::knownVrfs() const {
    std::set<L3::VrfName> missing = vrfsNamedBy(config_);
    std::vector<KnownVrf> vrfs;
    for (const LiveVrfs::Vrf& vrf : vrfs_.vrfs()) {
        missing.erase(vrf.name);
        vrfs.push_back(known(vrf));
    }
    for (const L3::VrfName& name : missing) {
        vrfs.push_back({name,
                        std::nullopt,
                        {},
                        vrfs_.ids().find(name),
                        "not active: no VRF device or --vrf of that name"});
    }
    std::ranges::stable_sort(vrfs, [](const KnownVrf& left, const KnownVrf& right) {
        return std::pair(left.name, !left.obstacle.empty())
               < std::pair(right.name, !right.obstacle.empty());
    });
    return vrfs;
}

KnownVrf LiveDevice::known(const LiveVrfs::Vrf& vrf) const {
    KnownVrf known{vrf.name, vrf.netns, vrf.device.name, vrfs_.ids().find(vrf.name), vrf.obstacle};
    if (vrf.isUp) {
        return known;
    }
    if (vrf.isDevice()) {
        known.id = vrfs_.ids().isConfigured(vrf.name) ? known.id : VrfIds::VrfId(vrf.device.table);
    } else if (const NamespaceFollower* const owner = follower(vrf.netns)) {
        known.obstacle = owner->failure().empty() ? "being learned" : owner->failure();
    } else {
        known.obstacle = "no such network namespace";
    }
    return known;
}

} // namespace Agent
