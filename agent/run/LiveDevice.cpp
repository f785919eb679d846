#include "agent/run/LiveDevice.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "agent/document/DocumentError.h"
#include "agent/run/MergeDiff.h"
#include "platform/orb/Error.h"

namespace Agent {

using json = nlohmann::json;

namespace {

bool hasId(const json& config, const std::string& vrf) {
    return config.contains(json::json_pointer("/vrfs") / vrf / "id");
}

} // namespace

LiveDevice::LiveDevice(DeviceInputs& inputs, Orb::Ptr<Orb::Clock> clock,
                       std::vector<VrfOption> vrfs, const json& config, Report report)
    : inputs_(inputs), clock_(std::move(clock)), options_(std::move(vrfs)),
      report_(std::move(report)) {
    configure(config);
    follow({L3::VrfName::defaultVrf(), Lanx::NamespaceName::defaultNamespace()});
    if (!options_.empty()) {
        watch_.emplace([clock = clock_] { return clock->now(); });
        watcher_.emplace(watch_->fd(), clock_, [this] { onNamespaces(); });
        onNamespaces();
    }
}

void LiveDevice::configure(const json& config) {
    json patch = mergeDiff(config_, config);
    const json none = json::object();
    VrfIds ids = ids_;
    ids.configure(config.value("vrfs", none), published_);
    json vrfs = json::object();
    for (const json* document : {&std::as_const(config_), &config}) {
        const json section = document->value("vrfs", none);
        for (const auto& item : section.items()) {
            const bool configured = hasId(config, item.key());
            const L3::VrfName name(item.key());
            if (name == L3::VrfName::defaultVrf()) {
                continue; // published with what is learned of it, like any VRF that runs
            }
            vrfs[item.key()]["id"] =
                configured || published_.contains(name) ? json(ids.idOf(name)) : json(nullptr);
        }
    }
    patch.erase("vrfs");
    if (!vrfs.empty()) {
        patch["vrfs"] = std::move(vrfs);
    }
    inputs_.apply(readDevicePatch(patch));
    config_ = config;
    ids_ = std::move(ids);
}

bool LiveDevice::isLearned() const {
    return std::all_of(followers_.begin(), followers_.end(),
                       [](const auto& entry) { return entry.second->isLearned(); });
}

bool LiveDevice::isSettled() const {
    return (!watch_ || std::isinf(watch_->retryAt()))
           && std::all_of(followers_.begin(), followers_.end(),
                          [](const auto& entry) { return entry.second->isSettled(); });
}

std::vector<L3::VrfName> LiveDevice::vrfs() const {
    std::vector<L3::VrfName> names;
    for (const auto& entry : followers_) {
        names.push_back(entry.first);
    }
    return names;
}

void LiveDevice::onNamespaces() {
    watch_->onReadable();
    for (const Linux::NamespaceWatch::Change& change : watch_->takeChanges()) {
        handle(change);
    }
    watcher_->wakeAt(watch_->retryAt());
}

void LiveDevice::handle(const Linux::NamespaceWatch::Change& change) {
    for (const VrfOption& vrf : options_) {
        if (vrf.netns.value() != change.name) {
            continue;
        }
        if (!change.appeared) {
            unfollow(vrf);
            continue;
        }
        try {
            follow(vrf);
        } catch (const Orb::Error& error) {
            report_("VRF " + vrf.vrf.value() + ": " + error.what());
        }
    }
}

void LiveDevice::follow(const VrfOption& vrf) {
    followers_[vrf.vrf] = std::make_unique<NamespaceFollower>(
        vrf, clock_,
        [this](NamespaceFollower& follower, json patch) { apply(follower, std::move(patch)); });
}

void LiveDevice::unfollow(const VrfOption& vrf) {
    const auto found = followers_.find(vrf.vrf);
    if (found == followers_.end()) {
        return;
    }
    json patch = found->second->withdraw();
    followers_.erase(found);
    if (published_.erase(vrf.vrf) == 0) {
        return;
    }
    json& entry = patch["vrfs"][vrf.vrf.value()];
    entry["status"] = nullptr;
    if (!hasId(config_, vrf.vrf.value())) {
        entry["id"] = nullptr;
    }
    applyOrReport(patch);
}

void LiveDevice::apply(NamespaceFollower& follower, json patch) {
    if (published_.insert(follower.vrf().vrf).second) {
        publish(follower, patch);
    }
    applyOrReport(patch);
}

void LiveDevice::publish(const NamespaceFollower& follower, json& patch) {
    const VrfOption& vrf = follower.vrf();
    json& entry = patch["vrfs"][vrf.vrf.value()];
    entry["id"] = ids_.idOf(vrf.vrf);
    if (vrf.vrf != L3::VrfName::defaultVrf()) {
        entry["status"] = {{"active", true}, {"netns", vrf.netns.value()}};
    }
}

void LiveDevice::applyOrReport(const json& patch) {
    try {
        inputs_.apply(readDevicePatch(patch));
    } catch (const DocumentError& error) {
        report_("the kernel's " + error.pointer() + ": " + error.what());
    } catch (const Orb::Error& error) {
        report_(error.what());
    }
}

} // namespace Agent
