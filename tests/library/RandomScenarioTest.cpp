#include <gtest/gtest.h>

#include <algorithm>

#include "platform/routing/ProtoVrfStatus.h"
#include "tests/library/RandomDevice.h"

namespace Routing::DirectNet {
namespace {

constexpr std::uint32_t scenarios = 500;
constexpr int patches = 150;

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
        EXPECT_TRUE(hasRoutes(harness, vrf, model.routes(vrf)));
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

class RandomScenarioTest : public testing::TestWithParam<std::uint32_t> {};

TEST_P(RandomScenarioTest, StateDependsOnTheHistoryOrOutlivesTheVrfs) {
    const std::uint32_t first = GetParam() * (scenarios / 10);
    for (std::uint32_t seed = first; seed < first + scenarios / 10; ++seed) {
        LibraryHarness harness;
        if (seed % 3 == 1) { // reviews are suspended after each prefix
            harness.scheduler->yieldPolicyIs([](const Kiln::TaskRun&) { return true; });
        }
        if (seed % 4 == 1) { // drains end after a few members
            harness.clock->secondsPerRead = 0.02;
        }
        RandomDevice device(harness, seed);
        for (int i = 0; i < patches; ++i) {
            device.step();
            if (i % 30 == 17) {
                expectAgreement(harness, device.model());
            }
        }
        expectAgreement(harness, device.model());
        harness.removeVrfs();
        EXPECT_EQ(harness.leftovers(), "");
        ASSERT_FALSE(HasFailure()) << "seed " << seed << '\n' << device.log();
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomScenarioTest, testing::Range(0U, 10U));

} // namespace
} // namespace Routing::DirectNet
