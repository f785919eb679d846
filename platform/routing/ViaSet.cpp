#include "platform/routing/ViaSet.h"

#include "platform/orb/value/Error.h"

namespace Routing::Rib::Memtab {

void ViaSet::viaKeyIs(std::size_t index, const ViaKey& key) {
    if (index >= maxVias) {
        throw Orb::RangeError("a via set has room for one via");
    }
    viaKey_ = key;
}

} // namespace Routing::Rib::Memtab
