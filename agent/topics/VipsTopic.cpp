#include <algorithm>

#include "agent/topics/RowTopic.h"
#include "agent/topics/VrfCursor.h"
#include "directnet/root/RootSm.h"
#include "platform/virtualip/VirtualIpStatus.h"

namespace Agent {

namespace {

std::string addressText(const VirtualIp::VrfIpWithMaskPair& key) {
    return key.ipAddrWithMask().toString();
}
std::string addressText(const VirtualIp::VrfIpPair& key) { return key.ipAddr().toString(); }

struct VipRow {
    std::string vrf;
    std::string address;
    std::vector<std::string> intfs; // that carry it
    bool subnetRoutes = false;

    static void describe(auto& row, auto&& column) {
        column({"vrf", "VRF"}, row.vrf);
        column({"address", "ADDRESS"}, row.address);
        column({"intfs", "INTFS"}, row.intfs);
        column({"subnetRoutes", "SUBNETROUTES"}, row.subnetRoutes);
    }
};

class VipWalk {
  public:
    VipWalk(const AgentView& view, const std::optional<L3::VrfName>& vrf)
        : view_(view), vrfs_(view, vrf) {}

    bool step(const auto& sink) {
        if (vrfs_.vrf() != nullptr
            && (stepIn(*view_.root.allVrfVirtualIpStatus(), last4_, sink)
                || stepIn(*view_.root.allVrfVirtualIp6Status(), last6_, sink))) {
            return true;
        }
        last4_.reset();
        last6_.reset();
        return vrfs_.advance();
    }

  private:
    template <typename Key>
    bool stepIn(const auto& allVrfs, std::optional<Key>& last, const auto& sink) const {
        const L3::VrfName& name = vrfs_.vrf()->vrfName();
        const auto* status = allVrfs.vrfVirtualIpStatus(name);
        if (status == nullptr) {
            return false;
        }
        const auto& table = status->virtualIp();
        const auto* entry = last ? table.after(*last) : table.first();
        if (entry == nullptr) {
            return false;
        }
        last = (*entry)->fwkKey();
        VipRow row{name.value(), addressText(*last), {}, status->subnetRouteEnabled()};
        for (const auto& [intf, carries] : (*entry)->intfId()) {
            if (carries) {
                row.intfs.emplace_back(intf.name());
            }
        }
        std::ranges::sort(row.intfs);
        sink(row);
        return true;
    }

    AgentView view_;
    VrfCursor vrfs_;
    std::optional<VirtualIp::VrfIpWithMaskPair> last4_;
    std::optional<VirtualIp::VrfIpPair> last6_;
};

} // namespace

extern const Topic vipsTopic =
    rowTopic<VipRow, VipWalk>("vips", "the virtual addresses and the interfaces that carry them");

} // namespace Agent
