#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "platform/ringlog/TraceHandle.h"
#include "tests/support/LibraryHarness.h"
#include "tests/support/Outsider.h"

namespace Routing::DirectNet {
namespace {

using VrfId = ::Vrf::VrfIdMap::VrfId;

/// VRF A, id 1, leaks 10.0.0.0/24 into VRF B, id 2, as far as each of them is there.
class LeakLifeTest : public testing::Test {
  protected:
    void addSource() { harness.vrf("A", 1); }
    void addDest() { harness.vrf("B", 2); }
    void addLeak() { harness.leak(1, "10.0.0.0/24", 2); }
    void addInterface() {
        harness.device("default", "Et1");
        harness.address("A", "Et1", "10.0.0.1/24");
    }

    LibraryHarness harness;
    const std::vector<RouteRow> leaked{{"10.0.0.1/32", 1, "Et1", "", "1"}};
};

TEST_F(LeakLifeTest, ReviewThatIsPendingWhenItsSourceGoesLeaksNothing) {
    harness.subnetRoutes(true);
    addSource();
    addInterface();
    harness.virtualIp("A", "10.0.0.1/24", "Et1");
    harness.virtualIp("A", "10.0.0.9/24", "Et1");
    addLeak();
    harness.settle();
    addDest();
    harness.vrfIdDel("A");
    EXPECT_ROUTES(harness, "B", {});
}

// Also what no machine of the VRF would withdraw, when its backlog goes.
TEST_F(LeakLifeTest, MachineThatComesLateFollowsWhatIsThere) {
    using Lanx::IpGenPrefix;
    const Lanx::IntfId et1("Et1");
    const auto prefix = IpGenPrefix::fromString("10.0.0.0/24");
    const auto address = Lanx::IpGenAddrWithMask::fromString("10.0.0.1/24");
    const auto config = harness.root().intfViaSetConfig();
    const auto backlogs = Orb::makePtr<IntfBacklogByVrf>();
    const Orb::Ptr<IntfBacklog> source(backlogs->intfBacklogIs(L3::VrfName("A"), VrfId(1)));
    const Orb::Ptr<IntfBacklog> dest(backlogs->intfBacklogIs(L3::VrfName("B"), VrfId(2)));
    IntfViaSetKeyStatus& status = *source->intfViaSetKeyStatus4();
    const IntfViaSetKey key = config->findOrCreateViaSetKey(et1, VrfId(1), status);
    const auto contribute = [&] {
        source->addToIntfIdsByPrefix(et1, prefix, address, Fib::RouteType::connected,
                                     key.viaSetKey(), VrfId::invalid(), false);
    };
    const auto isLeaked = [&] { return dest->intfIdsByPrefix(address.hostPrefix()) != nullptr; };
    const auto leaks = Orb::makePtr<DirectNetLeakLocalStatus>();
    leaks->leakedRouteBySourceVrfIs(VrfId(1))->destVrfIdIs(prefix, VrfId(2));
    status.incIntfVskRefcount(et1);
    contribute();
    const auto sm = Orb::makePtr<ReceiveRouteLeakSm>(ReceiveRouteLeakSm::Arguments{
        leaks, Orb::makePtr<DirectNetLeakLocalStatus>(), harness.scheduler, config, backlogs});
    harness.settle();
    EXPECT_TRUE(isLeaked());
    source->delFromIntfIdsByPrefix(et1, prefix, address, Fib::RouteType::connected,
                                   VrfId::invalid(), false);
    EXPECT_FALSE(isLeaked());
    contribute();
    leaks->leakedRouteBySourceVrf(VrfId(1))->destVrfIdDel(prefix, VrfId(2));
    EXPECT_FALSE(isLeaked());
    leaks->leakedRouteBySourceVrf(VrfId(1))->destVrfIdIs(prefix, VrfId(2));
    EXPECT_TRUE(isLeaked());
    backlogs->intfBacklogDel(VrfId(1));
    EXPECT_FALSE(isLeaked());
    config->releaseViaSetKey(et1, status);
    EXPECT_EQ(harness.viaSets(), 0U); // no other reference was left
}

TEST_F(LeakLifeTest, LeaksReplacedInTheMiddleOfADecisionAreFollowed) {
    addSource();
    addDest();
    addInterface();
    harness.secondary("A", "Et1", "10.0.9.1/24");
    addLeak();
    EXPECT_ROUTES(harness, "B", leaked);
    const auto outsider =
        Orb::makePtr<Outsider>(harness.root().ipv4AllVrfRouteConfig(), [this](Orb::AttributeId) {
            harness.leakDel(1);
            harness.leak(1, "10.0.9.0/24", 2);
        });
    harness.secondary("A", "Et1", "10.0.8.1/24");
    EXPECT_ROUTES(harness, "B", {{"10.0.9.1/32", 1, "Et1", "", "1"}});
}

/// A review that yields after every prefix.
class LeakReviewTest : public LeakLifeTest {
  protected:
    LeakReviewTest() {
        harness.scheduler->yieldPolicyIs([](const Kiln::TaskRun&) { return true; });
        addSource();
        addInterface();
        for (int i = 0; i < prefixes; ++i) {
            const std::string net = "10.1." + std::to_string(i);
            harness.secondary("A", "Et1", net + ".1/24");
            harness.leak(1, net + ".0/24", 2);
            harness.address6("A", "Et1", "2001:db8:" + std::to_string(i) + "::1/64");
            harness.leak(1, "2001:db8:" + std::to_string(i) + "::/64", 2);
        }
        harness.settle();
        addDest();
    }

    /// One run of the review.
    void runOnce() { ASSERT_TRUE(harness.clock->runOne()); }
    const ReceiveRouteLeakSm& sm() const { return *harness.root().receiveRouteLeakSm(); }
    bool suspended() const { return sm().reviewBookmark().sourceVrfId() != VrfId::invalid(); }
    std::size_t leakedSoFar() const { return harness.backlog("B").intfIdsByPrefix().size(); }

    static constexpr int prefixes = 4;
};

TEST_F(LeakReviewTest, SuspendedReviewGoesOnWithTheNextPrefix) {
    std::size_t runs = 0;
    for (std::size_t before = 0; !sm().reviewedIpv6(); before = leakedSoFar()) {
        runOnce();
        EXPECT_LE(leakedSoFar() - before, 1U); // also behind the last IPv4 prefix
        ASSERT_LT(++runs, 3U * prefixes);
    }
    EXPECT_EQ(leakedSoFar(), 2U * prefixes);
    EXPECT_FALSE(suspended());
}

TEST_F(LeakReviewTest, ReviewAskedForInTheMiddleOfARunBeginsAtTheBeginning) {
    auto outsider = Orb::makePtr<Outsider>(
        Orb::Ptr<Orb::Entity>(&harness.backlog("B")),
        [this](Orb::AttributeId) { harness.root().receiveRouteLeakSm()->scheduleReview(); });
    runOnce();
    EXPECT_EQ(leakedSoFar(), 1U);
    EXPECT_FALSE(suspended());
    outsider = nullptr;
    harness.settle();
    EXPECT_EQ(leakedSoFar(), 2U * prefixes);
}

TEST_F(LeakReviewTest, NewLeakIsAddedOnce) {
    harness.settle();
    int added = 0;
    Ringlog::TraceHandle::sinkIs([&added](std::string_view line) {
        added += line.find("] adding source vrf=") != std::string_view::npos ? 1 : 0;
    });
    Ringlog::TraceHandle::levelOfAllIs(8);
    harness.secondary("A", "Et1", "10.9.0.1/24");
    harness.leak(1, "10.9.0.0/24", 2);
    harness.root().receiveRouteLeakSm()->scheduleReview();
    harness.settle();
    Ringlog::TraceHandle::levelOfAllIs(Ringlog::TraceHandle::off);
    Ringlog::TraceHandle::sinkIs({});
    EXPECT_EQ(added, 1);
}

TEST_F(LeakReviewTest, ReviewGoesOnBehindABookmarkedPrefixThatIsGone) {
    runOnce();
    ASSERT_TRUE(suspended());
    const std::string bookmarked = sm().reviewBookmark().genPrefix().toString();
    harness.leakDel(1, bookmarked, 2);
    harness.settle();
    EXPECT_EQ(leakedSoFar(), 2U * prefixes - 1);
}

TEST_F(LeakReviewTest, SuspendedReviewEndsWhateverGoesMeanwhile) {
    for (const auto& change : std::vector<std::function<void()>>{
             [this] { harness.vrfIdDel("A"); }, [this] { harness.vrfIdDel("B"); },
             [this] { harness.root().receiveRouteLeakSm()->scheduleReview(); },
             [this] { harness.leakDel(1); }, [this] { harness.stop(), harness.start(); }}) {
        harness.vrfId("A", 1);
        harness.vrfIdDel("B");
        harness.settle();
        harness.vrfId("B", 2);
        runOnce();
        change();
        harness.settle();
        EXPECT_TRUE(sm().reviewedIpv6());
    }
    harness.vrfIdDel("B");
    harness.vrfId("B", 2);
    runOnce(); // all VRFs go with the review suspended
}

} // namespace
} // namespace Routing::DirectNet
