#include "agent/run/LiveDevice.h"

#include <algorithm>
#include <utility>

#include "agent/document/DocumentError.h"
#include "agent/run/MergeDiff.h"
#include "platform/orb/value/Error.h"

namespace Agent {

using json = nlohmann::json;

namespace {

bool hasId(const json& config, const std::string& vrf) {
    return config.contains(json::json_pointer("/vrfs") / vrf / "id");
}

std::string failureOf(const L3::VrfName& vrf, const std::string& why) {
    return "VRF " + vrf.value() + ": " + why;
}

} // namespace

LiveDevice::LiveDevice(DeviceInputs& inputs, Orb::Ptr<Orb::Clock> clock,
                       std::vector<VrfOption> vrfs, const json& config, Report report)
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
            handleChanges();
        });
        handleChanges();
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

void LiveDevice::handleChanges() {
    for (const Linux::NamespaceWatch::Change& change : watch_->takeChanges()) {
        for (const VrfOption& vrf : options_) {
            if (vrf.netns.value() == change.name) {
                change.appeared ? follow(vrf) : unfollow(vrf);
            }
        }
    }
}

void LiveDevice::follow(const VrfOption& vrf) {
    followers_[vrf.vrf] = std::make_unique<NamespaceFollower>(
        vrf, clock_,
        [this](NamespaceFollower& follower, json patch) { apply(follower, std::move(patch)); },
        [this, name = vrf.vrf](const std::string& why) { report_(failureOf(name, why)); });
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
