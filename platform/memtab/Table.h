#pragma once

#include <cstddef>
#include <string_view>

#include "platform/orb/object/Entity.h"
#include "platform/orb/object/Ptr.h"
#include "platform/orb/value/Name.h"
#include "platform/vaultdb/Folder.h"

namespace OrbMemtab {

/// An entity whose collections are bounded by what its writer declares when it mounts it, and may
/// be shared with other processes.
class Table : public Orb::Entity {
  public:
    /// Notified when a member has gone for whose going somebody waits.
    static constexpr Orb::AttributeId roomAttribute = Orb::lastAttributeId;

    /// Bounds the collection; members beyond that are refused with RangeError. A collection that
    /// the table does not have is a RangeError too.
    virtual void collectionCapacityIs(std::string_view collection, std::size_t capacity) = 0;

    /// What keeps an entity and a table of the folder alike.
    using Bond = Orb::Ptr<Orb::PtrInterface>;

    /// Writes the folder's table of that mount path from now on, for as long as the bond, if there
    /// is one, lives, and has what was found there. Must happen while the entity is empty. Throws
    /// TableInUseError, FolderError.
    virtual Bond share(const Orb::Ptr<Vaultdb::Folder>& folder, const Orb::String& path) = 0;

    /// Follows the folder's table of that mount path, while the bond lives: what its writer has
    /// changed, now or later, changes here. Must happen while the entity is empty. Throws
    /// FolderError.
    virtual Bond follow(const Orb::Ptr<Vaultdb::Folder>& folder, const Orb::String& path) = 0;

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
