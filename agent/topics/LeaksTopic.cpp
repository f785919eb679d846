#include <algorithm>
#include <functional>

#include "agent/device/DeviceInputs.h"
#include "agent/topics/LeakRow.h"
#include "agent/topics/RowTopic.h"
#include "directnet/root/RootSm.h"
#include "platform/routing/DirectNetLeakLocalStatus.h"

namespace Agent {

namespace {

using Vrf::VrfIdMap::VrfId;

class LeakWalk {
  public:
    /// All leaks, or those of one source VRF.
    LeakWalk(const AgentView& view, const std::optional<L3::VrfName>& vrf) : view_(view) {
        if (vrf) {
            only_ = view.root.containerSm(*vrf)->vrfId();
        }
        beginFamily();
    }

    bool step(const auto& sink) {
        if (sources_.empty()) {
            if (isIpv6_) {
                return false;
            }
            isIpv6_ = true;
            beginFamily();
            return true;
        }
        const VrfId source = sources_.back();
        if (const auto* leaks = status().leakedRouteBySourceVrf(source)) {
            const auto& prefixes = leaks->destVrfId();
            if (const auto* entry = last_ ? prefixes.after(*last_) : prefixes.first()) {
                last_ = entry->key();
                for (const auto& destination : entry->value()) {
                    sink(LeakRow{nameOf(source), *last_, nameOf(destination.key())});
                }
                return true;
            }
        }
        last_.reset();
        sources_.pop_back();
        return true;
    }

  private:
    const Routing::DirectNetLeakLocalStatus& status() const {
        return isIpv6_ ? *view_.root.ipv6CrLeakLocalStatus() : *view_.root.ipv4CrLeakLocalStatus();
    }
    void beginFamily();
    std::string nameOf(VrfId id) const;

    AgentView view_;
    std::optional<VrfId> only_;
    bool isIpv6_ = false;
    std::vector<VrfId> sources_; // still to be walked, the present one last
    std::optional<Lanx::IpGenPrefix> last_;
};

void LeakWalk::beginFamily() {
    for (const auto& source : status().leakedRouteBySourceVrf()) {
        if (!only_ || *only_ == source->sourceVrfId()) {
            sources_.push_back(source->sourceVrfId());
        }
    }
    std::sort(sources_.begin(), sources_.end(), std::greater<>());
}

/// The id where no VRF has it.
std::string LeakWalk::nameOf(VrfId id) const {
    const L3::VrfName* name = view_.inputs.vrfs().name(id);
    return name == nullptr ? std::to_string(id.value()) : name->value();
}

} // namespace

extern const Topic leaksTopic = rowTopic<LeakRow, LeakWalk>(
    "leaks", "the prefixes that VRFs leak to others; with --vrf those out of the VRF");

} // namespace Agent
