#pragma once

#include <cstdint>
#include <map>
#include <string_view>
#include <utility>

#include "platform/orb/attribute/Declare.h"
#include "platform/orb/value/Name.h"
#include "platform/vaultdb/Folder.h"

namespace Vaultdb {

/// The store of the device's state: entities by path. It outlives the agents that mount what it
/// holds, so a table that one run filled is found by the next. With a folder its tables are shared
/// with other processes, and outlive this one.
class EntityManager : public Orb::Entity {
    ORB_ENTITY(EntityManager, "Vaultdb::EntityManager")

  public:
    /// A store in private memory.
    EntityManager() = default;
    explicit EntityManager(Orb::Ptr<Folder> folder) : folder_(std::move(folder)) {}

    /// Where the store's tables are shared; null for a private store.
    const Orb::Ptr<Folder>& folder() const { return folder_; }

    /// The entity at the path, made as that type if there is none. Throws Error for a type that
    /// can't be made and NameInUseError for a path that holds another type.
    Orb::Ptr<Orb::Entity> findOrCreate(const Orb::String& path, std::string_view typeName);

    /// The entity at the path, or null.
    Orb::Entity* entity(const Orb::String& path) const;

    /// Mounts of a path, counted by whoever mounts and unmounts it.
    void mounted(const Orb::String& path);
    void unmounted(const Orb::String& path);
    std::uint32_t mounts(const Orb::String& path) const;

    /// Forgets the count of a path that nobody mounts any more. What is stored there stays.
    void cleanup(const Orb::String& path);

    /// How the entity at a path is bound to the folder's table. What keeps them alike is held for
    /// the life of the store.
    struct Bond {
        bool writes;
        Orb::Ptr<Orb::PtrInterface> keeper; ///< null where none is needed
    };
    const Bond* bond(const Orb::String& path) const {
        const auto found = bonds_.find(path);
        return found == bonds_.end() ? nullptr : &found->second;
    }
    void bondIs(const Orb::String& path, Bond bond) { bonds_.emplace(path, std::move(bond)); }

  private:
    Orb::Ptr<Folder> folder_;
    std::map<Orb::String, Orb::Ptr<Orb::Entity>, std::less<>> entities_;
    std::map<Orb::String, std::uint32_t, std::less<>> mounts_;
    std::map<Orb::String, Bond, std::less<>> bonds_;
};

} // namespace Vaultdb
