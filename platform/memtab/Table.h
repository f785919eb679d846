#pragma once

#include <cstddef>
#include <string_view>

#include "platform/orb/Entity.h"

namespace OrbMemtab {

/// An entity whose collections are bounded by what its writer declares when it mounts it.
class Table : public Orb::Entity {
  public:
    /// Bounds the collection; members beyond that are refused with RangeError. A collection that
    /// the table does not have is a RangeError too.
    virtual void collectionCapacityIs(std::string_view collection, std::size_t capacity) = 0;
};

} // namespace OrbMemtab
