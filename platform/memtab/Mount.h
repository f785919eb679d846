#pragma once

#include <string_view>
#include <utility>

#include "platform/memtab/MountInfo.h"
#include "platform/orb/object/Ptr.h"
#include "platform/vaultdb/EntityManager.h"

namespace OrbMemtab {

class Table;

/// Mounts tables of the store by path and type name. Mounts of one path yield one entity. What is
/// unmounted stays in the store with all that it holds.
///
/// In a store with a folder, a table that is mounted to be written is the folder's, one that is
/// mounted to be read follows it.
class Mount {
  public:
    explicit Mount(Orb::Ptr<Vaultdb::EntityManager> entityManager)
        : entityManager_(std::move(entityManager)) {}

    /// Throws Error for an unknown type, NameInUseError for a path that holds another type, and
    /// RangeError for a collection that the table does not have. In a store with a folder also
    /// Vaultdb::TableInUseError for a table that somebody else writes, and Vaultdb::FolderError.
    void doMount(const Orb::String& path, std::string_view typeName, const MountInfo& info);

    /// The entity mounted at the path; null where there is none.
    Orb::Ptr<Orb::Entity> getEntity(const Orb::String& path) const;

    template <typename T>
    Orb::Ptr<T> getEntity(const Orb::String& path) const {
        return Orb::Ptr<T>(static_cast<T*>(getEntity(path).get()));
    }

    void doUnmount(const Orb::String& path);

    /// Drops what is left of a mount once nobody has the path mounted.
    void cleanup(const Orb::String& path);

  private:
    void bind(Table& table, const Orb::String& path, MountInfo::Type type);

    Orb::Ptr<Vaultdb::EntityManager> entityManager_;
};

} // namespace OrbMemtab
