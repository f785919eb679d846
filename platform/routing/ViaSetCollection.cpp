#include "platform/routing/ViaSetCollection.h"

#include "platform/orb/attribute/DefineType.h"

namespace Routing::Rib::Memtab {

ORB_DEFINE_TYPE(ViaSetCollection)

void ViaSetCollection::viaSetIs(const ViaSet& viaSet) {
    const ViaSetKey key = viaSet.key();
    const ViaSet* present = sets_.find(key);
    if (present == nullptr || !(*present == viaSet)) {
        sets_.insertOrAssign(viaSet);
        notify(viaSetAttribute, &key);
    }
}

void ViaSetCollection::viaSetDel(ViaSetKey key) {
    if (sets_.erase(key)) {
        notify(viaSetAttribute, &key);
    }
}

void ViaSetCollection::viaSetDelAll() {
    while (!sets_.empty()) {
        viaSetDel(sets_.first()->key());
    }
}

} // namespace Routing::Rib::Memtab
