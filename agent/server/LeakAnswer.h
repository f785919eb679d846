#pragma once

#include <optional>
#include <vector>

#include "agent/server/Answer.h"
#include "platform/routing/DirectNetLeakLocalStatus.h"

namespace Agent {

/// The prefixes whose addresses are leaked between VRFs:
/// {"vrf":SOURCE,"prefix":..,"to":DESTINATION} each. The routes that come of them are the
/// destination's.
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
