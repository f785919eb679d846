#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "agent/base/Watcher.h"
#include "agent/device/DeviceInputs.h"
#include "agent/install/KernelPlaces.h"
#include "agent/linux/NamespaceWatch.h"
#include "agent/run/NamespaceFollower.h"
#include "agent/run/VrfIds.h"
#include "agent/run/VrfOption.h"

namespace Agent {

/// The device that a live agent runs on: keeps the inputs in line with what the kernel and the
/// configuration say.
///
/// The VRF "default" is the namespace that the agent was started in; further VRFs are named
/// namespaces, there while the namespace is. A VRF is published together with all that was learned
/// of it at first, so that it is not ready before its addresses are known.
///
/// Trouble with what the kernel says concerns nothing else and is reported; the device goes on. So
/// it does while a namespace cannot be followed, which it keeps trying to.
///
/// One agent thread, no locks. The inputs must outlive it.
class LiveDevice final : public KernelPlaces {
  public:
    using Report = std::function<void(const std::string& message)>;

    /// Throws Orb::Error if named namespaces cannot be watched for, DocumentError if the
    /// configuration contradicts itself.
    LiveDevice(DeviceInputs& inputs, Orb::Ptr<Orb::Clock> clock, std::vector<VrfOption> vrfs,
               const DevicePatch& config, Report report);
    LiveDevice(const LiveDevice&) = delete;
    LiveDevice& operator=(const LiveDevice&) = delete;
    ~LiveDevice() override = default;

    /// Tells this one of namespaces and links, from now on; it must outlive the device.
    void observerIs(Observer& observer) { observer_ = &observer; }

    /// Replaces the configuration, a document, and applies the difference. Throws DocumentError,
    /// with nothing changed, for one that contradicts itself or what runs.
    void configure(const DevicePatch& config);

    /// Whether every VRF whose namespace is there has been published.
    bool isLearned() const;
    /// Whether the inputs are what a fresh start would give, as far as is known, but for the VRFs
    /// that cannot be followed at present.
    bool isSettled() const;

    std::optional<VrfPlace> place(const L3::VrfName& vrf) const override;
    std::vector<L3::VrfName> vrfsOf(const Lanx::NamespaceName& netns) const override;

    /// The VRFs that have been published.
    const std::set<L3::VrfName>& vrfs() const { return published_; }
    /// Which VRFs cannot be followed at present though their namespaces are there, and why.
    std::vector<std::string> failures() const;

  private:
    void handleEvents();
    Edit<VrfsPatch> configuredVrfs(const DevicePatch& config, VrfIds& ids) const;
    void follow(const VrfOption& vrf);
    void unfollow(const VrfOption& vrf);
    void apply(NamespaceFollower& follower, DevicePatch patch);
    void publish(const NamespaceFollower& follower, DevicePatch& patch);
    void applyOrReport(const DevicePatch& patch);

    DeviceInputs& inputs_;
    Orb::Ptr<Orb::Clock> clock_;
    std::vector<VrfOption> options_;
    DevicePatch config_;
    Report report_;
    Observer* observer_ = nullptr;
    VrfIds ids_;
    std::set<L3::VrfName> published_;
    std::map<L3::VrfName, std::unique_ptr<NamespaceFollower>> followers_;
    std::optional<Linux::NamespaceWatch> watch_;
    std::optional<Watcher> watcher_;
};

} // namespace Agent
