#pragma once

#include <map>
#include <optional>
#include <set>

#include "agent/patch/DevicePatch.h"

namespace Agent {

/// The ids of the VRFs of a live agent: 0 for the default VRF, what the configuration says, else
/// the table of a VRF device and the lowest that is free for a namespace. A namespace that comes
/// back gets the id that it had, unless that has been given away.
class VrfIds {
  public:
    using VrfId = Vrf::VrfIdMap::VrfId;

    /// The id of a VRF that is up or comes up; one is chosen if it has none yet.
    VrfId idOf(const L3::VrfName& name);
    /// The id of a VRF device that comes up; none if its table cannot be its id.
    std::optional<VrfId> take(const L3::VrfName& name, std::uint32_t table);
    /// The VRF has gone. A namespace's id is remembered.
    void release(const L3::VrfName& name, bool remember);

    /// What a VRF has, or had when it was up.
    std::optional<VrfId> find(const L3::VrfName& name) const;
    bool isConfigured(const L3::VrfName& name) const { return configured_.contains(name); }
    /// Which VRF has the id for now.
    std::optional<L3::VrfName> holder(VrfId id) const;

    /// Takes over the ids that a configuration has. A VRF that runs and loses its configured id
    /// keeps it as one that was chosen.
    void configure(const DevicePatch& config, const std::set<L3::VrfName>& running);

  private:
    struct Chosen {
        VrfId id;
        bool isInUse = false;
    };

    bool isFree(VrfId id) const;

    std::map<L3::VrfName, VrfId> configured_;
    std::map<L3::VrfName, Chosen> chosen_;
};

} // namespace Agent
