#pragma once

#include <cstddef>
#include <string_view>

#include "platform/orb/object/Entity.h"

namespace OrbMemtab {

/// An entity whose collections are bounded by what its writer declares when it mounts it.
class Table : public Orb::Entity {
  public:
    /// Notified when a member has gone for whose going somebody waits.
    static constexpr Orb::AttributeId roomAttribute = Orb::lastAttributeId;

    /// Bounds the collection; members beyond that are refused with RangeError. A collection that
    /// the table does not have is a RangeError too.
    virtual void collectionCapacityIs(std::string_view collection, std::size_t capacity) = 0;

    /// Asks for one notification of roomAttribute, to all that wait.
    void awaitRoom() const { awaited_ = true; }

  protected:
    void noteRoom() {
        if (awaited_) {
            awaited_ = false;
            notify(roomAttribute);
        }
    }

  private:
    mutable bool awaited_ = false;
};

} // namespace OrbMemtab
