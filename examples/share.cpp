// A host whose tables other processes read, in the folder that it is given: publishes an interface
// address, keeps it until the end of standard input, and stops. What tables_follow prints meanwhile
// comes from shared memory.

#include <cstdio>
#include <exception>
#include <iostream>

#include "Host.h"
#include "platform/orb/loop/ActivityManager.h"
#include "platform/orb/loop/SimulatedClock.h"

using namespace Example;

namespace {

/// A store whose tables are files of the folder. The via sets are an input, so the host mounts
/// them.
void shareTables(Inputs& inputs, const char* folder) {
    static constexpr const char* viaSets = "routing/rib/viaSet/connected";
    inputs.tables = Orb::makePtr<Vaultdb::EntityManager>(Orb::makePtr<Vaultdb::Folder>(
        Vaultdb::Folder::Options{.path = folder, .group = {}, .report = {}}));
    OrbMemtab::Mount mount(inputs.tables);
    mount.doMount(viaSets, Rib::Memtab::ViaSetCollection::orbTypeName,
                  OrbMemtab::MountInfo(OrbMemtab::MountInfo::Type::write));
    inputs.viaSets =
        Orb::makePtr<Rib::ViaSetConfig>(mount.getEntity<Rib::Memtab::ViaSetCollection>(viaSets));
}

void publishAddress(const Inputs& inputs) {
    inputs.vrfIds->nameToIdMapIs(Orb::makePtr<Vrf::VrfIdMap::NameToIdMap>());
    inputs.vrfIds->nameToIdMap()->vrfIdIs(L3::VrfName::defaultVrf(), Vrf::VrfIdMap::VrfId(0));
    const Lanx::IntfId intfId("Ethernet1");
    publishDevice(inputs, Lanx::NamespaceName::defaultNamespace(), intfId, "et1");
    inputs.ipv4->vrfIpIntfStatusIs(L3::VrfName::defaultVrf())
        ->ipIntfStatusIs(intfId)
        ->activeAddrWithMaskIs(Lanx::IpAddrWithMask::fromString("10.1.1.5/24"));
}

} // namespace

int main(int argc, char** argv) try {
    const Orb::Ptr<Orb::Clock> clock = Orb::makePtr<Orb::SimulatedClock>();
    Orb::ActivityManager activityManager(clock);
    Inputs inputs(clock);
    shareTables(inputs, argc > 1 ? argv[1] : "tables");
    const auto root = inputs.makeRoot();
    publishAddress(inputs);
    activityManager.runUntilIdle();

    while (std::getchar() != EOF) {
    }
    root->handleDelete();
    activityManager.runUntilIdle();
} catch (const std::exception& error) {
    std::cerr << error.what() << '\n';
    return 1;
}
