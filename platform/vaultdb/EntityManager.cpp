#include "platform/vaultdb/EntityManager.h"

#include "platform/orb/attribute/DefineType.h"
#include "platform/orb/attribute/Dir.h"
#include "platform/orb/value/Assert.h"
#include "platform/orb/value/Error.h"

namespace Vaultdb {

ORB_DEFINE_TYPE(EntityManager)

Orb::Ptr<Orb::Entity> EntityManager::findOrCreate(const Orb::String& path,
                                                  std::string_view typeName) {
    if (Orb::Entity* present = entity(path)) {
        if (present->fwkTypeNode()->name() != typeName) {
            throw Orb::NameInUseError("path " + path + " is in use by an entity of type "
                                      + Orb::String(present->fwkTypeNode()->name()));
        }
        return Orb::Ptr<Orb::Entity>(present);
    }
    return entities_[path] = Orb::createEntityOfType(typeName, Orb::Name(path));
}

Orb::Entity* EntityManager::entity(const Orb::String& path) const {
    const auto found = entities_.find(path);
    return found == entities_.end() ? nullptr : found->second.get();
}

void EntityManager::mounted(const Orb::String& path) { ++mounts_[path]; }

void EntityManager::unmounted(const Orb::String& path) {
    ORB_ASSERT(mounts(path) > 0, "mounts( path ) > 0");
    --mounts_[path];
}

std::uint32_t EntityManager::mounts(const Orb::String& path) const {
    const auto found = mounts_.find(path);
    return found == mounts_.end() ? 0 : found->second;
}

void EntityManager::cleanup(const Orb::String& path) {
    if (mounts(path) == 0) {
        mounts_.erase(path);
    }
}

} // namespace Vaultdb
