#include "agent/device/RoomReport.h"

namespace Agent {

void RoomReport::check(const Routing::DirectNet::RootSm& root, double now, const Report& report) {
    for (const auto& container : root.containerSm()) {
        const L3::VrfName& vrf = container->vrfName();
        const auto seen = waiting_.find(vrf);
        if (container->intfBacklog()->waitingForRoom() > 0) {
            if (seen == waiting_.end()) {
                report("VRF " + vrf.value()
                       + ": the tables are full, some of its routes wait for room");
            }
            waiting_[vrf] = now;
        } else if (seen != waiting_.end() && now > seen->second + pause) {
            waiting_.erase(seen);
        }
    }
}

} // namespace Agent
