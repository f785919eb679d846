#include "agent/device/VrfInputs.h"

#include <algorithm>
#include <set>
#include <string>

#include "agent/patch/DocumentPlace.h"

namespace Agent {

using Ip::VrfState;
using Vrf::VrfIdMap::NameToIdMap;
using Vrf::VrfIdMap::NameToIdMapWrapper;

VrfInputs::VrfInputs()
    : ids_(Orb::makePtr<NameToIdMapWrapper>()), statuses_(Orb::makePtr<Ip::AllVrfStatusLocal>()) {
    ids_->nameToIdMapIs(Orb::makePtr<NameToIdMap>());
}

const L3::VrfName* VrfInputs::name(VrfId id) const {
    const auto found = nameById_.find(id.value());
    return found == nameById_.end() ? nullptr : &found->second;
}

VrfInputs::Plan VrfInputs::plan(const Edit<VrfsPatch>& patch) const {
    Plan plan;
    if (patch.isRemoval()) {
        planRemovalOfAll(plan);
    }
    if (const VrfsPatch* members = patch.value()) {
        for (const auto& [name, edit] : *members) {
            planId(name, edit, plan);
            planStatus(name, memberOf<&VrfPatch::status>(edit), plan);
        }
    }
    checkIds(plan);
    return plan;
}

void VrfInputs::planRemovalOfAll(Plan& plan) const {
    for (const auto& entry : map().vrfId()) {
        plan.idsThatGo.push_back(entry.key());
    }
    for (const auto& status : statuses_->vrf()) {
        plan.statusesThatGo.push_back(status->vrfName());
    }
}

void VrfInputs::planId(const L3::VrfName& name, const Edit<VrfPatch>& edit, Plan& plan) const {
    const VrfId present = map().vrfId(name);
    const VrfId wanted = after<&VrfPatch::id>(edit, present);
    if (wanted == present) {
        return;
    }
    if (present != VrfId::invalid()) {
        plan.idsThatGo.push_back(name);
    }
    if (wanted != VrfId::invalid()) {
        plan.idsThatCome.emplace_back(name, wanted);
    }
}

void VrfInputs::planStatus(const L3::VrfName& name, const Edit<VrfStatusPatch>& edit,
                           Plan& plan) const {
    const Ip::VrfStatusLocal* present = statuses_->vrf(name);
    if (edit.isRemoval() && present != nullptr) {
        plan.statusesThatGo.push_back(name);
    }
    const VrfStatusPatch* patch = edit.value();
    if (patch == nullptr) {
        return;
    }
    std::optional<bool> wasActive;
    std::optional<Lanx::NamespaceName> formerNetns;
    if (present != nullptr) {
        wasActive = present->state() == VrfState::active;
        formerNetns = present->netNs();
    }
    const bool active = after<&VrfStatusPatch::active>(*patch, wasActive);
    const auto netns = after<&VrfStatusPatch::netns>(*patch, formerNetns);
    const VrfState state = active ? VrfState::active : VrfState::initializing;
    const bool sameNetns = present != nullptr && present->netNs() == netns;
    if (sameNetns && present->state() == state) {
        return;
    }
    // A namespace changes under nobody's feet: the status goes and comes back with the new one.
    if (present != nullptr && !sameNetns) {
        plan.statusesThatGo.push_back(name);
    }
    plan.statusesThatCome.push_back({name, state, netns});
}

void VrfInputs::checkIds(const Plan& plan) const {
    const std::set<L3::VrfName> going(plan.idsThatGo.begin(), plan.idsThatGo.end());
    std::unordered_map<VrfId::Number, const L3::VrfName*> coming;
    for (const auto& [name, id] : plan.idsThatCome) {
        const L3::VrfName* holder = this->name(id);
        if (holder != nullptr && going.contains(*holder)) {
            holder = nullptr;
        }
        const auto [other, first] = coming.emplace(id.value(), &name);
        if (holder != nullptr || !first) {
            const L3::VrfName& taken = holder != nullptr ? *holder : *other->second;
            const DocumentPlace document;
            const DocumentPlace vrfs(document, "vrfs");
            const DocumentPlace vrf(vrfs, name.value());
            DocumentPlace(vrf, "id").refuse(std::to_string(id.value()) + " is the id of VRF "
                                            + taken.value());
        }
    }
}

void VrfInputs::withdraw(const Plan& plan) {
    for (const L3::VrfName& name : plan.idsThatGo) {
        nameById_.erase(map().vrfId(name).value());
        ids_->nameToIdMap()->vrfIdDel(name);
    }
    for (const L3::VrfName& name : plan.statusesThatGo) {
        statuses_->vrfDel(name);
    }
}

void VrfInputs::publish(const Plan& plan) {
    for (const auto& [name, state, netns] : plan.statusesThatCome) {
        const Orb::Ptr<Ip::VrfStatusLocal> status(statuses_->vrfIs(name));
        if (status == nullptr) {
            continue;
        }
        status->netNsIs(netns); // before the state, which is what makes others look
        status->stateIs(state);
    }
    for (const auto& [name, id] : plan.idsThatCome) {
        nameById_.emplace(id.value(), name);
        ids_->nameToIdMap()->vrfIdIs(name, id);
    }
}

} // namespace Agent
