#include "platform/orb/object/AllocTrackTypeInfo.h"

#include "platform/orb/object/TypeNode.h"

namespace Orb {

void AllocTrackTypeInfo::trackAllocation(const TypeNode& type) {
    type.living_.fetch_add(1, std::memory_order_relaxed);
}

void AllocTrackTypeInfo::trackDeallocation(const TypeNode& type) {
    type.living_.fetch_sub(1, std::memory_order_relaxed);
}

std::size_t AllocTrackTypeInfo::living(const TypeNode& type) {
    return type.living_.load(std::memory_order_relaxed);
}

} // namespace Orb
