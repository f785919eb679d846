#include <gtest/gtest.h>

#include <string>

#include "platform/orb/value/Error.h"
#include "tests/support/LibraryHarness.h"

namespace Routing::DirectNet {
namespace {

/// Tables that hold fewer routes or vias than the device asks for.
class FullTableTest : public testing::Test {
  protected:
    FullTableTest() {
        h.vrfId("default", 0);
        h.vrf("red", 5);
        for (int i = 1; i <= 5; ++i) {
            h.device("default", intf(i));
        }
    }

    static std::string intf(int i) { return "Et" + std::to_string(i); }
    /// One route each.
    void addresses(const std::string& vrf, int from, int to) {
        for (int i = from; i <= to; ++i) {
            h.address(vrf, intf(i), "10.0." + std::to_string(i) + ".1/32");
        }
    }
    std::size_t routes(const std::string& vrf) {
        h.settle();
        return h.routes(vrf).size();
    }
    bool ready(const std::string& vrf) {
        return h.container(vrf).vrfReadyStatus()->v4DirectNetsReady();
    }

    LibraryHarness h;
};

TEST_F(FullTableTest, RoutesThatDoNotFitWaitAndComeWhenThereIsRoom) {
    const auto table = h.root().ipv4AllVrfRouteConfig();
    table->collectionCapacityIs("route", 4);
    for (const double slow : {0.0, 0.05}) { // also when each slice ends after two pairs
        h.clock->secondsPerRead = slow;
        addresses("red", 1, 2);
        EXPECT_EQ(routes("red"), 2U);
        addresses("default", 1, 5);
        EXPECT_EQ(routes("default"), 2U); // and the agent comes to rest
        EXPECT_GT(h.backlog("default").waitingForRoom(), 0U);
        EXPECT_EQ(h.backlog("red").waitingForRoom(), 0U);
        EXPECT_EQ(h.backlog("default").backlog().size(), 3U);
        EXPECT_THROW(
            table->routeAdd(Rib::Route(Rib::RouteKey(::Vrf::VrfIdMap::VrfId(9),
                                                     Lanx::IpGenPrefix::fromString("10.9.9.9/32")),
                                       Rib::ViaSetKey(1), Fib::RouteType::connected)),
            Orb::RangeError);
        // What is there can change, and what waits can be withdrawn.
        h.address6("default", intf(1), "2001:db8::1/128");
        EXPECT_EQ(routes("default"), 3U);
        h.address6Del("default", intf(1), "2001:db8::1/128");
        h.address("red", intf(1), "0.0.0.0/0"); // the other VRF makes room for one
        EXPECT_EQ(routes("default"), 3U);
        h.vrfIdDel("red"); // and for one more
        EXPECT_EQ(routes("default"), 4U);
        h.address("default", intf(1), "0.0.0.0/0");
        EXPECT_EQ(routes("default"), 4U);
        EXPECT_EQ(h.backlog("default").waitingForRoom(), 0U);
        EXPECT_TRUE(h.backlog("default").backlog().empty());
        EXPECT_TRUE(ready("default"));
        h.clock->secondsPerRead = 0;
        h.ipv4Del("default");
        h.ipv4Del("red");
        h.vrf("red", 5);
        h.settle();
    }
}

// More wait than are looked at in one go, or in one slice.
TEST_F(FullTableTest, WaitingRoutesThatAreWithdrawnAreForgotten) {
    h.root().ipv4AllVrfRouteConfig()->collectionCapacityIs("route", 1);
    constexpr std::size_t hosts = 100;
    const auto host = [](std::size_t i) { return "10.1." + std::to_string(i) + ".1/32"; };
    for (const double slow : {0.0, 0.05}) {
        for (std::size_t i = 0; i < hosts; ++i) {
            h.secondary("default", intf(1), host(i));
        }
        h.settle();
        h.clock->secondsPerRead = slow;
        for (std::size_t gone = 0; gone < hosts; gone += 2) {
            EXPECT_EQ(h.backlog("default").backlog().size(), hosts - gone - 1);
            h.secondaryDel("default", intf(1), host(gone));
            h.run(0.2);
            h.secondaryDel("default", intf(1), host(gone + 1));
            h.settle();
        }
        EXPECT_TRUE(h.backlog("default").backlog().empty());
        h.clock->secondsPerRead = 0;
    }
}

TEST_F(FullTableTest, RoomOfOneFamilyIsFoundBehindManyThatWaitInTheOther) {
    h.root().ipv4AllVrfRouteConfig()->collectionCapacityIs("route", 1);
    h.root().ipv6AllVrfRouteConfig()->collectionCapacityIs("route", 0);
    addresses("red", 2, 2);
    h.settle();
    for (int i = 1; i <= 500; ++i) {
        h.address6("default", intf(1), "2001:db8::" + std::to_string(i) + "/128");
    }
    addresses("default", 1, 1);
    EXPECT_EQ(routes("default"), 0U);
    h.vrfIdDel("red");
    EXPECT_EQ(routes("default"), 1U);
}

TEST_F(FullTableTest, InterfaceThatWaitsForAViaGoesOrGetsThatOfAnEarlierRun) {
    const auto vias = h.root().ipv4AllVrfViaConfig();
    vias->collectionCapacityIs("via", 1);
    vias->viaIs(Rib::Via(Rib::ViaKey(1, 99, ::Vrf::VrfIdMap::VrfId(7), 1)));
    h.vrfIdDel("default");
    addresses("default", 1, 1);
    h.vrfId("default", 0);
    EXPECT_EQ(routes("default"), 0U);
    EXPECT_FALSE(ready("default"));
    h.ipv4Del("default", intf(1));
    EXPECT_TRUE(ready("default"));
    addresses("default", 1, 1);
    EXPECT_EQ(routes("default"), 0U);
    h.vrf("blue", 7);
    EXPECT_EQ(routes("default"), 1U);
}

TEST_F(FullTableTest, InterfacesWithoutRoomForTheirViaGetOneLater) {
    h.root().ipv4AllVrfViaConfig()->collectionCapacityIs("via", 2);
    h.vrfIdDel("default"); // ready it was, and stays as long as it is there
    addresses("default", 1, 3);
    h.secondary("default", intf(3), "10.1.0.1/32");
    h.virtualIp("default", "10.2.0.1/32", intf(4));
    h.vrfId("default", 0);
    EXPECT_EQ(routes("default"), 2U);
    EXPECT_GT(h.backlog("default").waitingForRoom(), 0U);
    EXPECT_FALSE(ready("default"));
    h.address("default", intf(1), "0.0.0.0/0");
    h.address("default", intf(2), "0.0.0.0/0");
    h.settle();
    EXPECT_ROUTES(h, "default",
                  {{"10.0.3.1/32", 2, intf(3)},
                   {"10.1.0.1/32", 2, intf(3)},
                   {"10.2.0.1/32", 1, intf(4), "receive-virtual"}});
    EXPECT_EQ(h.backlog("default").waitingForRoom(), 0U);
    EXPECT_TRUE(ready("default"));
}

} // namespace
} // namespace Routing::DirectNet
