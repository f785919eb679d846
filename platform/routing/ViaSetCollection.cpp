#include "platform/routing/ViaSetCollection.h"

#include "platform/orb/attribute/DefineType.h"

namespace Routing::Rib::Memtab {

ORB_DEFINE_TYPE(ViaSetCollection)
ORB_REGISTER(ViaSetCollection, ViaSetCollection, 0, 5)

void ViaSetCollection::viaSetIs(const ViaSet& viaSet) {
    tellIf(table_.insertOrAssign(viaSet), viaSetAttribute, viaSet.key());
}

void ViaSetCollection::viaSetDel(ViaSetKey key) {
    if (tellIf(table_.erase(key), viaSetAttribute, key)) {
        noteRoom();
    }
}

void ViaSetCollection::viaSetDelAll() {
    while (const auto viaSet = table_.records().first()) {
        viaSetDel(viaSet->key());
    }
}

} // namespace Routing::Rib::Memtab
