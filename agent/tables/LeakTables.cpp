#include "agent/tables/LeakTables.h"

#include <chrono>
#include <thread>

#include "agent/base/TablesPath.h"
#include "directnet/root/RootInputs.h"
#include "platform/memtab/Mount.h"
#include "platform/orb/loop/RealClock.h"

namespace Agent {

namespace MountPaths = Routing::DirectNet::MountPaths;

namespace {

constexpr int tries = 50;
constexpr std::chrono::milliseconds pause(20);

Orb::Ptr<LeakTables::Status> mountLeaks(const Orb::Ptr<Vaultdb::EntityManager>& store,
                                        const Orb::String& path) {
    OrbMemtab::Mount mount(store);
    mount.doMount(path, LeakTables::Status::orbTypeName,
                  OrbMemtab::MountInfo(OrbMemtab::MountInfo::Type::write));
    return mount.getEntity<LeakTables::Status>(path);
}

} // namespace

LeakTables::LeakTables(const std::string& folder, const Report& report)
    : activityManager_(Orb::makePtr<Orb::RealClock>()) {
    for (int left = tries - 1; !mount(folder, report, left == 0); --left) {
        std::this_thread::sleep_for(pause);
    }
}

/// Returns false when the tables are in use, and there is another try.
bool LeakTables::mount(const std::string& folder, const Report& report, bool isLastTry) {
    store_ = Orb::makePtr<Vaultdb::EntityManager>(Orb::makePtr<Vaultdb::Folder>(
        Vaultdb::Folder::Options{.path = folder, .group = groupOf(folder), .report = report}));
    try {
        ipv4_ = mountLeaks(store_, MountPaths::ipv4Leaks);
        ipv6_ = mountLeaks(store_, MountPaths::ipv6Leaks);
    } catch (const Vaultdb::TableInUseError&) {
        if (isLastTry) {
            throw;
        }
        return false;
    }
    return true;
}

} // namespace Agent
