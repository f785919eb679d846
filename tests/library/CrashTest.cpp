#include <gtest/gtest.h>

#include <memory>
#include <random>
#include <tuple>

#include "tests/library/RandomDevice.h"
#include "tests/support/SharedTables.h"

namespace Routing::DirectNet {
namespace {

/// Changes the device at random until it is killed.
void changeForEver(const SharedFolder& folder, std::uint32_t seed) {
    LibraryHarness harness(folder.store());
    RandomDevice device(harness, seed);
    for (;;) {
        device.step();
    }
}

/// Takes the tables over, changes the device at random and comes to rest: then the tables have what
/// the device says, and of earlier writers nothing.
void changeAndRest(const SharedFolder& folder, std::uint32_t seed) {
    auto harness = std::make_unique<LibraryHarness>(folder.store());
    RandomDevice device(*harness, seed);
    for (int step = 0; step < 40; ++step) {
        device.step();
    }
    harness->allVrfRibReady->vrfDelAll();
    harness->vrf("last", 99);
    harness->settle();
    std::size_t routes = 0;
    for (const std::string& vrf : device.model().vrfsWithContainer()) {
        const auto expected = device.model().routes(vrf);
        routes += expected.size();
        EXPECT_TRUE(hasRoutes(*harness, vrf, expected));
    }
    const RootSm& root = harness->root();
    EXPECT_EQ(root.ipv4AllVrfRouteConfig()->size() + root.ipv6AllVrfRouteConfig()->size(), routes);
    EXPECT_EQ(root.protoVrfTable()->size(), root.containerSm().size());
    Reader reader(folder);
    reader.update();
    EXPECT_EQ(reader.routes(), routes);
    std::ignore = harness.release(); // the end of the process is to find the tables as they are
}

// Every writer is killed at some moment; the tables that it leaves are read by another process, and
// taken over by the next writer. One follower lives through all of it.
TEST(CrashTest, TablesOfKilledWritersAreWholeAndAreTakenOver) {
    constexpr std::uint32_t kills = 300;
    const SharedFolder folder;
    Reader follower(folder);
    std::mt19937 random(7);
    for (std::uint32_t n = 0; n < kills; ++n) {
        Child writer([&] { changeForEver(folder, n); });
        ::usleep(static_cast<useconds_t>(random() % 30000));
        if (n % 3 == 0) { // the next one does not wait for the end of the killed
            ::kill(writer.pid(), SIGKILL);
            ASSERT_TRUE(Child([&] { changeAndRest(folder, 1000 + n); }).succeeds()) << n;
        }
        writer.kill();
        follower.update();
        Reader fresh(folder);
        fresh.update();
        ASSERT_EQ(follower.differencesTo(fresh), 0U) << n;
    }
}

// Routes of an earlier run may still name ids that a table gave out of which nothing is known.
TEST(CrashTest, IdsAreNotGivenOutAgainWhenTheirTableHasToBeMadeAnew) {
    const SharedFolder folder;
    const Orb::ActivityManager activityManager(Orb::makePtr<ManualClock>());
    const auto newId = [&folder](std::string* said) {
        OrbMemtab::FlatTable<Rib::ViaSetForm> table(16);
        table.share(Orb::makePtr<Vaultdb::Folder>(Vaultdb::Folder::Options{
                        folder.path(), {}, [said](const std::string& text) { *said += text; }}),
                    MountPaths::viaSets);
        return table.newId();
    };
    std::string said;
    const std::uint64_t first = newId(&said);
    EXPECT_EQ(newId(&said), first + 1);
    EXPECT_EQ(said, "");
    const auto file = std::filesystem::path(folder.path()) / "routing.rib.viaSet.connected";
    std::filesystem::resize_file(file, 4100);
    EXPECT_GT(newId(&said), first + 2);
    EXPECT_NE(said.find("is cut short"), std::string::npos) << said;
}

} // namespace
} // namespace Routing::DirectNet
