#pragma once

#include <cstddef>

namespace Orb {

class TypeNode;

/// Counts the living objects of each type. What is still counted when an agent has stopped was
/// left behind.
class AllocTrackTypeInfo {
  public:
    static void trackAllocation(const TypeNode& type);
    static void trackDeallocation(const TypeNode& type);

    /// Objects of the type that were made by makePtr() and not yet destroyed.
    static std::size_t living(const TypeNode& type);
};

} // namespace Orb
