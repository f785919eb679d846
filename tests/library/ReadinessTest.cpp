#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "platform/routing/ProtoVrfStatus.h"
#include "tests/support/LibraryHarness.h"

namespace Routing::DirectNet {
namespace {

using ::Vrf::VrfIdMap::VrfId;

class ReadinessTest : public testing::Test {
  protected:
    void addInterfaces() {
        harness.device("default", "Et1");
        harness.address("default", "Et1", "10.0.0.1/24");
        harness.address6("default", "Et1", "2001:db8::1/64");
    }
    VrfReadyStatus& flags(const std::string& vrf = "default") {
        return *harness.container(vrf).vrfReadyStatus();
    }
    bool ready() { return flags().v4DirectNetsReady() && flags().v6DirectNetsReady(); }
    bool anyReady() { return flags().v4DirectNetsReady() || flags().v6DirectNetsReady(); }

    LibraryHarness harness;
};

TEST_F(ReadinessTest, VrfIsReadyOnceItsFirstRoutesAreWritten) {
    harness.vrfId("default", 0);
    EXPECT_TRUE(ready()); // nothing to write
    harness.vrfIdDel("default");
    addInterfaces();
    harness.vrfId("default", 0);
    harness.clock->secondsPerRead = 0.05; // a slice for each member
    while (!harness.backlog("default").backlog().empty()) {
        EXPECT_FALSE(anyReady());
        harness.wakeUp();
    }
    EXPECT_TRUE(ready());
    harness.address("default", "Et1", "10.0.1.1/24");
    EXPECT_TRUE(ready()); // there is no way back
}

TEST_F(ReadinessTest, GracefulRestartHoldsReadinessBackUntilVerification) {
    addInterfaces();
    for (const bool drainedFirst : {true, false}) {
        harness.removeVrfs();
        harness.ribWaits("default", false);
        harness.stop();
        harness.grState = Orb::makePtr<GrState>(GrState::Arguments{true});
        harness.start();
        harness.ribWaits("default");
        harness.vrfId("default", 0);
        if (drainedFirst) {
            harness.settle();
        }
        EXPECT_FALSE(anyReady());
        harness.grState->startReadyVerificationIs(true);
        EXPECT_EQ(ready(), drainedFirst);
        harness.settle();
        EXPECT_TRUE(ready());
        EXPECT_TRUE(harness.ribStatus("default")->ready());
    }
}

TEST_F(ReadinessTest, RibHearsOfReadinessOnceBothFamiliesAreReady) {
    harness.ribWaits("default");
    addInterfaces();
    ASSERT_NE(harness.ribStatus("default"), nullptr);
    harness.vrfId("default", 0);
    flags().v4DirectNetsReadyIs(true); // one family is not enough
    EXPECT_EQ(harness.ribStatus("default")->readyTime(), 0);
    harness.settle();
    const double time = harness.ribStatus("default")->readyTime();
    EXPECT_TRUE(harness.ribStatus("default")->ready());
    EXPECT_EQ(time, harness.clock->now());

    harness.run(10);
    harness.vrfIdDel("default");
    harness.vrfId("default", 0);
    EXPECT_FALSE(anyReady());
    harness.settle(); // ready again later, but the time stays
    EXPECT_EQ(harness.ribStatus("default")->readyTime(), time);

    harness.ribWaits("default", false);
    EXPECT_EQ(harness.ribStatus("default"), nullptr);
    harness.ribWaits("default"); // listed when everything is ready already
    EXPECT_TRUE(harness.ribStatus("default")->ready());
    EXPECT_EQ(harness.ribStatus("default")->readyTime(), harness.clock->now());
}

TEST_F(ReadinessTest, ReadyTimeThatIsSetIsKept) {
    harness.ribWaits("default");
    harness.ribStatus("default")->readyTimeIs(std::numeric_limits<double>::quiet_NaN());
    harness.vrfId("default", 0);
    harness.settle();
    EXPECT_TRUE(ready());
    EXPECT_TRUE(std::isnan(harness.ribStatus("default")->readyTime()));
    EXPECT_FALSE(harness.ribStatus("default")->ready());
}

// They may still be on their way until then.
TEST_F(ReadinessTest, RoutesOfVrfsThatDoNotComeBackGoWhenAllOthersAreReady) {
    const auto routes = harness.root().ipv4AllVrfRouteConfig();
    harness.stop();
    for (const unsigned id : {5U, 77U}) {
        routes->routeAdd({Rib::RouteKey(VrfId(id), Lanx::IpGenPrefix::fromString("10.9.0.0/16")),
                          Rib::ViaSetKey(1), Fib::RouteType::connected});
    }
    harness.ribWaits("green");
    harness.start();
    harness.vrfId("default", 0);
    harness.settle();
    EXPECT_EQ(routes->size(), 2U);
    harness.vrf("red", 5);
    harness.settle();
    EXPECT_EQ(routes->vrfIds(), std::vector{VrfId(77)});
    harness.ribWaits("green", false);
    EXPECT_EQ(routes->size(), 0U);
}

} // namespace
} // namespace Routing::DirectNet
