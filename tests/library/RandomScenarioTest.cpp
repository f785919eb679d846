#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <random>

#include "platform/orb/value/Error.h"
#include "platform/routing/ProtoVrfStatus.h"
#include "tests/library/Ambush.h"
#include "tests/library/RandomDevice.h"

namespace Routing::DirectNet {
namespace {

constexpr std::uint32_t scenarios = 500;
constexpr int patches = 150;

/// Other scenarios than the usual ones are run by setting DIRECTNET_FIRST_SEED.
std::uint32_t firstSeed() {
    const char* text = std::getenv("DIRECTNET_FIRST_SEED");
    return text == nullptr ? 0 : static_cast<std::uint32_t>(std::strtoul(text, nullptr, 10));
}

/// All that hold via sets must or may, and there are no others: two each for IPv6, and two more for
/// the broadcasts of IPv4.
void expectViaSets(const LibraryHarness& harness, const DeviceModel& model) {
    std::set<DeviceModel::ViaSetHolder> holders;
    std::size_t viaSets = 0;
    for (const std::string& vrf : model.vrfsWithContainer()) {
        const ContainerSm& container = harness.container(vrf);
        const auto add = [&](const IntfViaSetKeyStatus& status, bool isVirtual) {
            for (const auto& [intf, key] : status.intfViaSetKey()) {
                holders.emplace(vrf, intf.name(), status.af(), isVirtual);
                viaSets += status.af() == Lanx::AddressFamily::ipv4 ? 4 : 2;
            }
        };
        add(*container.intfBacklog()->intfViaSetKeyStatus4(), false);
        add(*container.intfBacklog()->intfViaSetKeyStatus6(), false);
        add(*container.vrfVirtualIpStatusSm()->ivskStatus(), true);
        add(*container.vrfVirtualIp6StatusSm()->ivskStatus(), true);
    }
    EXPECT_EQ(harness.viaSets(), viaSets);
    const auto [certain, possible] = model.viaSetHolders();
    EXPECT_TRUE(std::ranges::includes(holders, certain));
    EXPECT_TRUE(std::ranges::includes(possible, holders));
}

/// The agent at rest shows what the device says, and nothing else.
void expectAgreement(LibraryHarness& harness, const DeviceModel& model) {
    harness.settle();
    ASSERT_EQ(harness.root().containerSm().size(), model.vrfsWithContainer().size());
    for (const std::string& vrf : model.vrfsWithContainer()) {
        const auto routes = model.routes(vrf);
        EXPECT_TRUE(hasRoutes(harness, vrf, routes));
        EXPECT_EQ(harness.container(vrf).intfBacklogSm()->installedIntfId().size(), routes.size());
        const VrfReadyStatus& ready = *harness.container(vrf).vrfReadyStatus();
        EXPECT_TRUE(ready.v4DirectNetsReady() && ready.v6DirectNetsReady()) << vrf;
        if (model.ribWaits.contains(vrf)) {
            ASSERT_NE(harness.ribStatus(vrf), nullptr) << vrf;
            EXPECT_TRUE(harness.ribStatus(vrf)->ready()) << vrf;
        }
    }
    expectViaSets(harness, model);
    EXPECT_EQ(harness.protoStatusDir->entity().size(), model.ribWaits.size());
}

class RandomScenarioTest : public testing::TestWithParam<std::uint32_t> {
  protected:
    /// Runs the tenth of the scenarios that is this test's, with what `step` does in each.
    template <typename Step>
    void runScenarios(Step step) {
        const std::uint32_t first = firstSeed() + GetParam() * (scenarios / 10);
        for (std::uint32_t seed = first; seed < first + scenarios / 10; ++seed) {
            LibraryHarness harness;
            if (seed % 3 == 1) { // reviews are suspended after each prefix
                harness.scheduler->yieldPolicyIs([](const Kiln::TaskRun&) { return true; });
            }
            if (seed % 4 == 1) { // drains end after a few members
                harness.clock->secondsPerRead = 0.02;
            }
            RandomDevice device(harness, seed);
            Ambush ambush(harness);
            device.beforeRestart = [&ambush] { ambush.liftIt(); };
            for (int i = 0; i < patches; ++i) {
                step(device, ambush, i);
                if (i % 30 == 17) {
                    ambush.liftIt();
                    expectAgreement(harness, device.model());
                }
            }
            ambush.liftIt();
            expectAgreement(harness, device.model());
            harness.removeVrfs();
            EXPECT_EQ(harness.leftovers(), "");
            ASSERT_FALSE(HasFailure()) << "seed " << seed << '\n' << device.log();
        }
    }
};

TEST_P(RandomScenarioTest, StateDependsOnThePresentAlone) {
    runScenarios([](RandomDevice& device, Ambush&, int) { device.step(); });
}

TEST_P(RandomScenarioTest, StateIsTheSameWhenChangesHappenInTheMiddleOfOthers) {
    std::mt19937 random(firstSeed() + GetParam());
    runScenarios([&](RandomDevice& device, Ambush& ambush, int) {
        ambush.liftIt();
        ambush.lay(1 + static_cast<int>(random() % 12), [&device] { device.interject(); });
        device.step();
    });
}

// What a watcher throws reaches whoever made the change, or the time go on, and nothing is lost.
TEST_P(RandomScenarioTest, StateIsTheSameWhateverWatchersThrow) {
    std::mt19937 random(firstSeed() + GetParam());
    runScenarios([&](RandomDevice& device, Ambush& ambush, int) {
        bool thrown = false;
        ambush.liftIt();
        ambush.lay(1 + static_cast<int>(random() % 12), [&] {
            thrown = true;
            throw Orb::Error("a watcher's");
        });
        bool caught = false;
        try {
            device.step();
        } catch (const Orb::Error& error) {
            EXPECT_STREQ(error.what(), "a watcher's");
            caught = true;
        }
        EXPECT_EQ(caught, thrown) << device.log();
    });
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomScenarioTest, testing::Range(0U, 10U));

} // namespace
} // namespace Routing::DirectNet
