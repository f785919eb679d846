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
#include "agent/run/LiveVrfs.h"
#include "agent/run/NamespaceFollower.h"
#include "agent/topics/VrfCatalog.h"

namespace Agent {

/// The device that a live agent runs on: keeps the inputs in line with what the kernel and the
/// configuration say.
///
/// The VRF "default" is the namespace that the agent was started in; further VRFs are named
/// namespaces, there while the namespace is, and the VRF devices of all of these. A VRF is
/// published together with all that was learned of it at first, so that it is not ready before its
/// addresses are known.
///
/// Trouble with what the kernel says concerns nothing else and is reported; the device goes on. So
/// it does while a namespace cannot be followed, which it keeps trying to.
///
/// One agent thread, no locks. The inputs must outlive it.
class LiveDevice final : public KernelPlaces, public VrfCatalog {
  public:
    using Report = std::function<void(const std::string& message)>;

    struct Options {
        std::vector<VrfOption> vrfs;
        bool vrfDevices = true; ///< each VRF device is a VRF
    };

    /// Throws Orb::Error if named namespaces cannot be watched for, DocumentError if the
    /// configuration contradicts itself.
    LiveDevice(DeviceInputs& inputs, Orb::Ptr<Orb::Clock> clock, Options options,
               const DevicePatch& config, Report report);
    LiveDevice(const LiveDevice&) = delete;
    LiveDevice& operator=(const LiveDevice&) = delete;
    ~LiveDevice() override = default;

    /// Replaces the configuration, a document, and applies the difference. Throws DocumentError,
    /// with nothing changed, for one that contradicts itself or what runs.
    void configure(const DevicePatch& config);
    /// The present configuration.
    const DevicePatch& config() const { return config_; }

    /// Whether every VRF whose namespace is there has been published.
    bool isLearned() const;
    /// Whether the inputs are what a fresh start would give, as far as is known, but for the VRFs
    /// that cannot be followed at present.
    bool isSettled() const;

    /// The VRFs that have been published.
    const std::set<L3::VrfName>& vrfs() const { return vrfs_.up(); }
    /// Which VRFs cannot be followed at present though their namespaces are there, and why.
    std::vector<std::string> failures() const;

    /// Of all namespaces, those that have gone included.
    Linux::NamespaceMonitor::Counts counts() const;

    /// Who is told of changes from now on; null for nobody.
    void observerIs(Observer* observer) { observer_ = observer; }
    std::optional<VrfPlace> place(const L3::VrfName& vrf) const override;
    std::vector<L3::VrfName> vrfsOf(const Lanx::NamespaceName& netns) const override;

    std::vector<KnownVrf> knownVrfs() const override;

  private:
    void handleEvents();
    Edit<VrfsPatch> configuredVrfs(const DevicePatch& config, VrfIds& ids) const;
    void follow(const VrfOption& vrf);
    void unfollow(const VrfOption& vrf);
    void handle(NamespaceFollower& follower);
    std::vector<LiveVrfs::Change> takeVrfChanges();
    void applyTo(const Lanx::NamespaceName& netns, DevicePatch patch,
                 const std::vector<LiveVrfs::Change>& changes);
    void applyElsewhere(const std::vector<LiveVrfs::Change>& changes,
                        const std::optional<Lanx::NamespaceName>& done = {});
    NamespaceFollower* follower(const Lanx::NamespaceName& netns) const;
    KnownVrf known(const LiveVrfs::Vrf& vrf) const;

    DeviceInputs& inputs_;
    Orb::Ptr<Orb::Clock> clock_;
    Options options_;
    DevicePatch config_;
    Report report_;
    LiveVrfs vrfs_;
    Observer* observer_ = nullptr;
    std::map<Lanx::NamespaceName, std::unique_ptr<NamespaceFollower>> followers_;
    Linux::NamespaceMonitor::Counts counted_; // of namespaces that have gone
    std::optional<Linux::NamespaceWatch> watch_;
    std::optional<Watcher> watcher_;
};

} // namespace Agent
