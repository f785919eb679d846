#include "platform/routing/ViaSet.h"

#include <algorithm>

namespace Routing::Rib::Memtab {

void ViaSet::viaKeyIs(std::size_t index, const ViaKey& key) {
    viaKeys_.resize(std::max(viaKeys_.size(), index + 1));
    viaKeys_[index] = key;
}

} // namespace Routing::Rib::Memtab
