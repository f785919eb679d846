#include "agent/explain/VrfObstacles.h"

#include "agent/device/DeviceInputs.h"
#include "agent/topics/VrfCatalog.h"
#include "directnet/model/ContainerRule.h"
#include "directnet/root/RootSm.h"

namespace Agent {

VrfObstacles vrfObstacles(const AgentView& view) {
    VrfObstacles obstacles;
    if (view.catalog != nullptr) {
        for (const KnownVrf& known : view.catalog->knownVrfs()) {
            obstacles.try_emplace(known.name, known.obstacle);
        }
    }
    const VrfInputs& vrfs = view.inputs.vrfs();
    for (const auto& id : vrfs.nameToIdMapWrapper()->nameToIdMap()->vrfId()) {
        obstacles.try_emplace(id.key());
    }
    for (const auto& status : vrfs.allVrfStatusLocal()->vrf()) {
        obstacles.try_emplace(status->vrfName());
    }
    for (const auto& status : view.inputs.ipStatus()->vrfIpIntfStatus()) {
        obstacles.try_emplace(status->vrfName());
    }
    for (const auto& status : view.inputs.ip6Status()->vrfIp6IntfStatus()) {
        obstacles.try_emplace(status->vrfName());
    }
    for (auto& [name, obstacle] : obstacles) {
        if (view.root.containerSm(name) != nullptr) {
            obstacle.clear();
        } else if (obstacle.empty()) {
            obstacle = Routing::DirectNet::ContainerRule(name, vrfs.nameToIdMapWrapper().get(),
                                                         *vrfs.allVrfStatusLocal())
                           .lack();
        }
    }
    return obstacles;
}

} // namespace Agent
