#pragma once

#include <string_view>

#include "platform/orb/attribute/Declare.h"
#include "platform/orb/container/HashMap.h"
#include "platform/orb/value/Name.h"

namespace Orb {

/// A directory of entities, each made here by its type and name.
class Dir : public Entity {
    ORB_ENTITY(Dir, "Orb::Dir")

  public:
    static constexpr AttributeId entityAttribute = firstAttributeId;

    /// The entity of that name, made if there is none. Throws Error for a type that is not known
    /// or can't be made from a name, and NameInUseError for a name of another type.
    Ptr<Entity> createEntity(std::string_view typeName, const Name& name);

    template <typename T>
    Ptr<T> createEntity(const Name& name) {
        const Ptr<Entity> entity = createEntity(T::fwkType().name(), name);
        return Ptr<T>(static_cast<T*>(entity.get()));
    }

    /// The entity, or null.
    Entity* entity(const Name& name) const;
    const HashMap<Name, Ptr<Entity>>& entity() const { return entities_; }

    void entityDel(const Name& name);

  private:
    HashMap<Name, Ptr<Entity>> entities_;
};

/// An entity of a registered type. Throws Error "unable to find type %s to create entity".
Ptr<Entity> createEntityOfType(std::string_view typeName, const Name& name);

} // namespace Orb
