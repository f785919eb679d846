#include "platform/orb/attribute/Dir.h"

#include "platform/orb/attribute/DefineType.h"
#include "platform/orb/attribute/TypeRegistry.h"
#include "platform/orb/value/Error.h"

namespace Orb {

ORB_DEFINE_TYPE(Dir)

Ptr<Entity> createEntityOfType(std::string_view typeName, const Name& name) {
    const TypeNode* type = TypeRegistry::instance().typeNode(typeName);
    Ptr<Entity> made = type == nullptr ? nullptr : type->create(name);
    if (made == nullptr) {
        throw Error(format("unable to find type %s to create entity", String(typeName).c_str()));
    }
    return made;
}

Ptr<Entity> Dir::createEntity(std::string_view typeName, const Name& name) {
    if (Entity* present = entity(name)) {
        if (present->fwkTypeNode()->name() != typeName) {
            throw NameInUseError("name " + name.value() + " is in use by an entity of type "
                                 + String(present->fwkTypeNode()->name()));
        }
        return Ptr<Entity>(present);
    }
    Ptr<Entity> made = createEntityOfType(typeName, name);
    entities_.insertOrAssign(name, made);
    const Name stable = name;
    notify(entityAttribute, &stable);
    return made;
}

Entity* Dir::entity(const Name& name) const {
    const Ptr<Entity>* entity = entities_.find(name);
    return entity == nullptr ? nullptr : entity->get();
}

void Dir::entityDel(const Name& name) {
    const Name stable = name;
    if (Ptr<Entity>* found = entities_.find(stable)) {
        const Ptr<Entity> released = *found;
        entities_.erase(stable);
        notify(entityAttribute, &stable);
    }
}

} // namespace Orb
