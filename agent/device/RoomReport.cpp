#include "agent/device/RoomReport.h"

namespace Agent {

void RoomReport::check(const Routing::DirectNet::RootSm& root, const Report& report) {
    for (const auto& container : root.containerSm()) {
        const L3::VrfName& vrf = container->vrfName();
        if (container->intfBacklog()->waitingForRoom() == 0) {
            waiting_.erase(vrf);
        } else if (waiting_.insert(vrf).second) {
            report("VRF " + vrf.value()
                   + ": the tables are full, some of its routes wait for room");
        }
    }
}

} // namespace Agent
