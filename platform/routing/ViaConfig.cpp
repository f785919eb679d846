#include "platform/routing/ViaConfig.h"

#include "platform/orb/attribute/DefineType.h"

namespace Routing::Rib::Ip {

ORB_DEFINE_TYPE(ViaConfig)
ORB_REGISTER(ViaConfig, ViaConfig, 0, 2)

Via ViaConfig::via(const ViaKey& key) const {
    const Via* found = table_.find(key);
    return found == nullptr ? Via() : *found;
}

void ViaConfig::viaIs(const Via& via) {
    if (table_.insertOrAssign(via)) {
        const ViaKey stable = via.key();
        notify(viaAttribute, &stable);
    }
}

void ViaConfig::viaDel(const ViaKey& key) {
    const ViaKey stable = key;
    if (table_.erase(stable)) {
        notify(viaAttribute, &stable);
        noteRoom();
    }
}

void ViaConfig::doDeleteViasForVrf(Vrf::VrfIdMap::VrfId vrfId) {
    const auto taken = table_.take(vrfId);
    if (taken == nullptr || !hasReactors()) {
        return;
    }
    const Orb::Ptr<const Orb::PtrInterface> kept = Orb::keep(*this);
    for (const Via& via : *taken) {
        notify(viaAttribute, &via.key());
    }
    noteRoom();
}

void ViaConfig::collectionCapacityIs(std::string_view collection, std::size_t capacity) {
    if (collection != "via") {
        throwUnknownCollection(orbTypeName, collection);
    }
    table_.capacityIs(capacity);
}

} // namespace Routing::Rib::Ip
