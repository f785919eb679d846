#pragma once

#include <optional>

#include "agent/server/Answer.h"
#include "agent/server/VrfCursor.h"
#include "platform/virtualip/VirtualIpStatus.h"

namespace Agent {

/// The virtual addresses that the agent works with and the interfaces that carry them:
/// {"vrf":..,"address":..,"intfs":[..],"subnetRoutes":..} each.
class VipAnswer : public Answer {
  public:
    VipAnswer(const AgentView& view, const std::optional<L3::VrfName>& vrf)
        : view_(view), vrfs_(view, vrf) {}

    bool appendNext(std::string& out) override;

  private:
    template <typename AllVrfs, typename Key>
    bool appendNextOf(const AllVrfs& allVrfs, std::optional<Key>& last, std::string& out) const;

    AgentView view_;
    VrfCursor vrfs_;
    std::optional<VirtualIp::VrfIpWithMaskPair> last4_;
    std::optional<VirtualIp::VrfIpPair> last6_;
};

} // namespace Agent
