#include "platform/routing/ViaConfig.h"

#include "platform/orb/attribute/DefineType.h"

namespace Routing::Rib::Ip {

ORB_DEFINE_TYPE(ViaConfig)
ORB_REGISTER(ViaConfig, ViaConfig, 0, 2)

void ViaConfig::viaIs(const Via& via) {
    tellIf(table_.insertOrAssign(via), viaAttribute, via.key());
}

void ViaConfig::viaDel(const ViaKey& key) {
    if (tellIf(table_.erase(key), viaAttribute, key)) {
        noteRoom();
    }
}

void ViaConfig::doDeleteViasForVrf(Vrf::VrfIdMap::VrfId vrfId) { clearVrf(vrfId, viaAttribute); }

} // namespace Routing::Rib::Ip
