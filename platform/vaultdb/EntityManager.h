#pragma once

#include <cstdint>
#include <map>
#include <string_view>

#include "platform/orb/attribute/Declare.h"
#include "platform/orb/value/Name.h"

namespace Vaultdb {

/// The store of the device's state: entities by path. It outlives the agents that mount what it
/// holds, so a table that one run filled is found by the next.
class EntityManager : public Orb::Entity {
    ORB_ENTITY(EntityManager, "Vaultdb::EntityManager")

  public:
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

  private:
    std::map<Orb::String, Orb::Ptr<Orb::Entity>, std::less<>> entities_;
    std::map<Orb::String, std::uint32_t, std::less<>> mounts_;
};

} // namespace Vaultdb
