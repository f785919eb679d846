#include "platform/routing/ProtoVrfTable.h"

#include "platform/orb/attribute/DefineType.h"

namespace Routing::Rib {

ORB_DEFINE_TYPE(ProtoVrfTable)
ORB_REGISTER(ProtoVrfTable, ProtoVrfTable, 0, 6)

void ProtoVrfTable::vrfIs(const ProtoVrf& vrf) {
    tellIf(table_.insertOrAssign(vrf), vrfAttribute, vrf.id);
}

void ProtoVrfTable::vrfDel(Vrf::VrfIdMap::VrfId id) {
    if (tellIf(table_.erase(id), vrfAttribute, id)) {
        noteRoom();
    }
}

} // namespace Routing::Rib
