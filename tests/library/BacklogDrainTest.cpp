#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "tests/support/LibraryHarness.h"
#include "tests/support/Outsider.h"

namespace Routing::DirectNet {
namespace {

class BacklogDrainTest : public testing::Test {
  protected:
    BacklogDrainTest() {
        harness.vrfId("default", 0);
        harness.device("default", "Et1");
        harness.device("default", "Et2");
        harness.settle();
    }
    ~BacklogDrainTest() override { ::unsetenv(testMode); }

    IntfBacklog& backlog() { return harness.backlog("default"); }
    IntfBacklogSm& sm() { return *harness.container("default").intfBacklogSm(); }
    void addHosts(int n) {
        for (int i = 0; i < n; ++i) {
            harness.secondary("default", "Et1",
                              "10." + std::to_string(i >> 8) + "." + std::to_string(i & 255)
                                  + ".1/32");
        }
    }
    std::size_t routes() { return harness.root().ipv4AllVrfRouteConfig()->size(); }
    static constexpr const char* testMode = "INTERFACEROUTEINFOSM_TEST";

    LibraryHarness harness;
};

TEST_F(BacklogDrainTest, BurstOfChangesIsDrainedOnceAfterADelay) {
    addHosts(3);
    harness.run(0.02);
    addHosts(5);
    harness.run(0.0199);
    EXPECT_EQ(routes(), 0U);
    harness.run(0.0002);
    EXPECT_EQ(routes(), 5U);
    EXPECT_EQ(harness.clock->nextWakeup(), Orb::Clock::never); // its own removals ask for nothing
}

TEST_F(BacklogDrainTest, LargeBacklogIsDrainedInSlicesAndCountedOnce) {
    constexpr int burst = 10000;
    const std::uint32_t emptied = backlog().backlogEmpty();
    addHosts(burst);
    const std::uint32_t calls = sm().handleBacklogCallCount();
    harness.clock->secondsPerRead = 0.08 / 1000;
    double last = 0;
    std::size_t left = backlog().backlog().size();
    while (harness.clock->nextWakeup() != Orb::Clock::never) {
        harness.clock->advanceTo(harness.clock->nextWakeup());
        const double start = harness.clock->now();
        EXPECT_GT(start - last, 0.039); // looking at the clock took a little of the pause
        harness.clock->runDue();
        last = harness.clock->now();
        EXPECT_LT(last - start, 0.081);
        ASSERT_LT(backlog().backlog().size(), left);
        left = backlog().backlog().size();
        EXPECT_EQ(backlog().backlogEmpty(), emptied + (left == 0 ? 1 : 0));
    }
    EXPECT_GE(sm().handleBacklogCallCount() - calls, 10U);
    EXPECT_EQ(routes(), static_cast<std::size_t>(burst));
}

TEST_F(BacklogDrainTest, NextSliceBeginsWhereTheLastOneStopped) {
    addHosts(10);
    harness.clock->secondsPerRead = 1; // one member a slice
    harness.wakeUp();
    const IntfIdAndPrefix bookmark = sm().backlogBookmark();
    ASSERT_TRUE(backlog().backlog().contains(bookmark));
    harness.wakeUp();
    EXPECT_FALSE(backlog().backlog().contains(bookmark));
    EXPECT_EQ(backlog().backlog().size(), 8U);
    addHosts(20);                                 // some of which lie before it
    backlog().backlogDel(sm().backlogBookmark()); // before the next slice
    const IntfIdAndPrefix first = backlog().backlog().first()->key();
    harness.wakeUp();
    EXPECT_FALSE(backlog().backlog().contains(first));
    EXPECT_EQ(backlog().backlog().size(), 16U);
    EXPECT_TRUE(backlog().backlog().contains(sm().backlogBookmark()));
}

TEST_F(BacklogDrainTest, TestAidDropsMembersOrKeepsThem) {
    const std::uint32_t emptied = backlog().backlogEmpty();
    ::setenv(testMode, "1", 1);
    addHosts(3);
    harness.settle();
    EXPECT_EQ(routes(), 0U);
    EXPECT_EQ(backlog().backlogEmpty(), emptied + 1);
    ::setenv(testMode, "2", 1);
    addHosts(6);
    harness.clock->secondsPerRead = 0.001;
    harness.run(5);
    EXPECT_EQ(backlog().backlog().size(), 3U); // those that are new
    EXPECT_EQ(backlog().backlogEmpty(), emptied + 1);
    harness.clock->secondsPerRead = 0;
    ::unsetenv(testMode);
    harness.settle();
    EXPECT_EQ(routes(), 3U);
    EXPECT_EQ(backlog().backlogEmpty(), emptied + 2);
}

// A queued prefix whose last contributor goes must not be found in the index any more.
TEST_F(BacklogDrainTest, PrefixIsQueuedBeforeItsEmptiedSetLeavesTheIndex) {
    harness.address("default", "Et1", "10.0.0.1/32");
    harness.settle();
    std::vector<std::string> seen;
    const auto outsider =
        Orb::makePtr<Outsider>(Orb::Ptr<Orb::Entity>(&backlog()), [&](Orb::AttributeId id) {
            if (id == IntfBacklog::backlogAttribute) {
                seen.emplace_back("queued");
            } else if (id == IntfBacklog::intfIdsByPrefixAttribute) {
                seen.emplace_back("index");
            }
        });
    harness.address("default", "Et1", "0.0.0.0/0");
    EXPECT_EQ(seen, (std::vector<std::string>{"queued", "index"}));
}

TEST_F(BacklogDrainTest, AddressesThatGoDuringADrainGetNoRoutesAnyMore) {
    addHosts(3);
    int changes = 0;
    const auto outsider =
        Orb::makePtr<Outsider>(harness.root().ipv4AllVrfRouteConfig(), [&](Orb::AttributeId) {
            ++changes;
            harness.ipv4Del("default", "Et1");
        });
    harness.settle();
    EXPECT_EQ(changes, 2); // one route came and went
}

TEST(BacklogDeathTest, BrokenInvariantsStopTheAgent) {
    const Lanx::IntfId et1("Et1");
    LibraryHarness harness;
    harness.vrfId("default", 0);
    const auto& status = harness.backlog("default").intfViaSetKeyStatus4();
    status->incIntfVskRefcount(et1);
    status->incIntfVskRefcount(et1);
    status->decIntfVskRefcount(et1);
    status->decIntfVskRefcount(et1);
    EXPECT_FALSE(status->vskRefcountByIntfId().contains(et1));
    EXPECT_DEATH(status->decIntfVskRefcount(et1), "vskRefcountByIntfId\\( intfId \\) > 0");

    const auto prefix = Lanx::IpGenPrefix::fromString("10.0.0.0/24");
    harness.backlog("default").intfIdsByPrefixIs(intfIdSetFactory(prefix));
    EXPECT_DEATH(harness.container("default").intfBacklogSm()->getIntfIdAndAddr(prefix),
                 "intfIdAndAddrs->intfIdAndAddrs\\(\\) > 0");
    harness.backlog("default").intfIdsByPrefixDel(prefix);
    {
        const Orb::Ptr<ContainerSm> held(&harness.container("default"));
        EXPECT_DEATH(harness.vrfIdDel("default"), "container->references\\(\\) == 1");
    }
    const Orb::Ptr<RootSm> held(&harness.root());
    EXPECT_DEATH(harness.root().handleDelete(), "references\\(\\) == 1");
}

} // namespace
} // namespace Routing::DirectNet
