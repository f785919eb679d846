#include "platform/memtab/Mount.h"

#include "platform/memtab/Table.h"

namespace OrbMemtab {

void Mount::doMount(const Orb::String& path, std::string_view typeName, const MountInfo& info) {
    const Orb::Ptr<Orb::Entity> entity = entityManager_->findOrCreate(path, typeName);
    if (auto* table = dynamic_cast<Table*>(entity.get())) {
        for (const auto& [collection, capacity] : info.collectionInfo()) {
            table->collectionCapacityIs(collection, capacity);
        }
        bind(*table, path, info.type());
    }
    entityManager_->mounted(path);
}

// Whoever writes a table has it, so that reading it in the same store needs nothing.
void Mount::bind(Table& table, const Orb::String& path, MountInfo::Type type) {
    const Orb::Ptr<Vaultdb::Folder>& folder = entityManager_->folder();
    if (folder == nullptr) {
        return;
    }
    const bool writes = type == MountInfo::Type::write;
    const auto* bond = entityManager_->bond(path);
    if (bond == nullptr) {
        entityManager_->bondIs(
            path, {writes, writes ? table.share(folder, path) : table.follow(folder, path)});
    } else if (writes && !bond->writes) {
        throw Vaultdb::TableInUseError("table " + path + ": is mounted to be read");
    }
}

Orb::Ptr<Orb::Entity> Mount::getEntity(const Orb::String& path) const {
    return Orb::Ptr<Orb::Entity>(entityManager_->entity(path));
}

void Mount::doUnmount(const Orb::String& path) { entityManager_->unmounted(path); }

void Mount::cleanup(const Orb::String& path) { entityManager_->cleanup(path); }

} // namespace OrbMemtab
