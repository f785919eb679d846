#pragma once

#include <optional>
#include <vector>

#include "agent/socket/Answer.h"
#include "platform/routing/DirectNetLeakLocalStatus.h"

namespace Agent {

/// The prefixes that are leaked between VRFs and whether the destination has the route:
/// {"vrf":SOURCE,"prefix":..,"to":DESTINATION,"installed":..} each.
class LeakAnswer : public Answer {
  public:
    /// All leaks, or those of one source VRF.
    LeakAnswer(const AgentView& view, const std::optional<L3::VrfName>& vrf);

    bool appendNext(std::string& out) override;

  private:
    using VrfId = Vrf::VrfIdMap::VrfId;

    const Routing::DirectNetLeakLocalStatus& status() const;
    void begin();
    void append(std::string& out, VrfId source, const Lanx::IpGenPrefix& prefix,
                VrfId destination) const;
    void appendVrf(std::string& out, VrfId id) const;

    AgentView view_;
    std::optional<VrfId> only_;
    bool ipv6_ = false;
    std::vector<VrfId> sources_; // still to be walked, the present one last
    std::optional<Lanx::IpGenPrefix> last_;
};

} // namespace Agent
