#pragma once

#include <functional>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "agent/linux/VrfDevice.h"
#include "agent/patch/DevicePatch.h"
#include "agent/run/VrfIds.h"
#include "agent/run/VrfOption.h"

namespace Agent {

/// The VRFs of a live agent: one for each network namespace that it follows, and one for each VRF
/// device in these. A VRF is up while its namespace or device is there, and nobody else has its
/// name or id: who comes first has them. The names of namespaces are taken from the start.
class LiveVrfs {
  public:
    using Report = std::function<void(const std::string& message)>;
    using VrfId = VrfIds::VrfId;

    struct Vrf {
        L3::VrfName name;
        Lanx::NamespaceName netns;
        Linux::VrfDevice device; ///< of index 0 for the namespace itself
        bool isUp = false;
        std::string obstacle; ///< what a device that is there waits for

        bool isDevice() const { return device.index != 0; }
    };

    /// A VRF that has come up or gone.
    struct Change {
        L3::VrfName name;
        Lanx::NamespaceName netns;
        int device = 0; ///< index, 0 for the namespace itself
        bool isUp = false;
    };

    /// What a device waits for is said once.
    LiveVrfs(const std::vector<VrfOption>& namespaces, Report report);

    const VrfIds& ids() const { return ids_; }
    /// What the ids will be with this configuration.
    VrfIds idsWith(const DevicePatch& config) const;
    void idsAre(VrfIds ids) { ids_ = std::move(ids); }

    /// The namespace has been learned. Returns whether that is new.
    bool namespaceIs(const Lanx::NamespaceName& netns) { return learned_.insert(netns).second; }
    /// All VRFs of the namespace go.
    void namespaceDel(const Lanx::NamespaceName& netns);
    /// These are all VRF devices of the namespace.
    void devicesAre(const Lanx::NamespaceName& netns, const std::vector<Linux::VrfDevice>& devices);

    /// What has come up or gone since the last call: first what went.
    std::vector<Change> takeChanges();
    /// Adds to the patch what the document is to say of the VRF now.
    void describe(const Change& change, VrfsPatch& patch);

    /// All that there are; those of namespaces stay while they are not up.
    const std::vector<Vrf>& vrfs() const { return vrfs_; }
    /// Null if no VRF of that name is up.
    const Vrf* findUp(const L3::VrfName& name) const;
    const std::set<L3::VrfName>& up() const { return up_; }

  private:
    void takeDown(Vrf& vrf);
    void bringUp(Vrf& vrf);
    std::string obstacleOf(const Vrf& vrf);

    Report report_;
    VrfIds ids_;
    std::vector<Vrf> vrfs_; // in the order in which they were asked for or seen
    std::set<L3::VrfName> up_;
    std::set<Lanx::NamespaceName> learned_;
    std::vector<Change> gone_;
};

} // namespace Agent
