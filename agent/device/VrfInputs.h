#pragma once

#include <optional>
#include <unordered_map>
#include <utility>
#include <vector>

#include "agent/patch/DevicePatch.h"
#include "platform/ip/AllVrfStatusLocal.h"
#include "platform/ip/VrfStatusLocal.h"
#include "platform/vrf/NameToIdMap.h"
#include "platform/vrf/NameToIdMapWrapper.h"

namespace Agent {

/// The VRFs that the agent is told of: their ids and their local status.
///
/// An id or a namespace that changes in place is published as removal and addition, and the
/// removals of a patch all come before its additions, so that VRFs may swap their ids. No two VRFs
/// ever have one id.
class VrfInputs {
  public:
    using VrfId = Vrf::VrfIdMap::VrfId;
    using Names = std::vector<L3::VrfName>;

    /// What a patch does, worked out before anything is done.
    struct Plan {
        struct Status {
            L3::VrfName name;
            Ip::VrfState state;
            Lanx::NamespaceName netns;
        };
        Names idsThatGo;
        std::vector<std::pair<L3::VrfName, VrfId>> idsThatCome;
        Names statusesThatGo;
        std::vector<Status> statusesThatCome; // or change their state
    };

    VrfInputs();

    const Orb::Ptr<Vrf::VrfIdMap::NameToIdMapWrapper>& nameToIdMapWrapper() const { return ids_; }
    const Orb::Ptr<Ip::AllVrfStatusLocal>& allVrfStatusLocal() const { return statuses_; }

    /// The name of the VRF with that id; null if there is none.
    const L3::VrfName* name(VrfId id) const;

    /// Throws DocumentError when two VRFs would have one id afterwards.
    Plan plan(const Edit<VrfsPatch>& patch) const;

    void withdraw(const Plan& plan);
    void publish(const Plan& plan);

  private:
    void planRemovalOfAll(Plan& plan) const;
    void planId(const L3::VrfName& name, const Edit<VrfPatch>& edit, Plan& plan) const;
    void planStatus(const L3::VrfName& name, const Edit<VrfStatusPatch>& edit, Plan& plan) const;
    void checkIds(const Plan& plan) const;

    const Vrf::VrfIdMap::NameToIdMap& map() const { return *ids_->nameToIdMap(); }

    Orb::Ptr<Vrf::VrfIdMap::NameToIdMapWrapper> ids_;
    Orb::Ptr<Ip::AllVrfStatusLocal> statuses_;
    std::unordered_map<VrfId::Number, L3::VrfName> nameById_;
};

} // namespace Agent
