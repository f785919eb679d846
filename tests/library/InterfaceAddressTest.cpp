#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/LibraryHarness.h"

namespace Routing::DirectNet {
namespace {

std::vector<RouteRow> operator+(std::vector<RouteRow> rows, const std::vector<RouteRow>& more) {
    rows.insert(rows.end(), more.begin(), more.end());
    return rows;
}

/// What 10.N.0.1/24 on Et1 yields.
std::vector<RouteRow> setOf(int n, bool directedBroadcast = false) {
    const std::string net = "10." + std::to_string(n) + ".0.";
    return {{net + "0/24", 11, "Et1"},
            {net + "1/32", 1, "Et1"},
            {net + "0/32", 3, "Et1"},
            {net + "255/32", directedBroadcast ? 3U : 4U, "Et1", "directed-broadcast"}};
}

std::string addressOf(int n) { return "10." + std::to_string(n) + ".0.1/24"; }

class InterfaceAddressTest : public testing::Test {
  protected:
    InterfaceAddressTest() {
        harness.vrfId("default", 0);
        harness.device("default", "Et1");
    }
    Ip::IpIntfStatus& et1() { return harness.ipv4("default", "Et1"); }
    void primary(const std::string& address) { harness.address("default", "Et1", address); }
    void secondary(const std::string& address, bool inUse = true) {
        harness.secondary("default", "Et1", address, inUse);
    }
    void expectRoutes(const std::vector<RouteRow>& rows) {
        EXPECT_ROUTES(harness, "default", rows);
    }
    void expectNoneOfTheInterface() {
        expectRoutes({});
        EXPECT_EQ(harness.viaSets(), 0U);
        EXPECT_EQ(harness.vias(), 0U);
    }

    LibraryHarness harness;
};

TEST_F(InterfaceAddressTest, Ipv6AddressInfoThatChangesTakesNoFurtherReference) {
    const auto address = Lanx::Ip6AddrWithMask::fromString("2001:db8::1/128");
    harness.address6("default", "Et1", "2001:db8::2/128", false); // the default info at first
    harness.address6("default", "Et1", "2001:db8::1/128");
    Ip6::IntfStatus& status = harness.ipv6("default", "Et1");
    for (const std::uint32_t lifetime : {10U, 20U, 0U}) {
        status.addrIs(address, Ip6::AddressInfo{true, lifetime});
        expectRoutes({{"2001:db8::1/128", 2, "Et1"}});
    }
    status.addrIs(address, Ip6::AddressInfo{false, 10}); // not the default, so still in use
    expectRoutes({{"2001:db8::1/128", 2, "Et1"}});
    status.addrDel(address);
    expectNoneOfTheInterface();
}

TEST_F(InterfaceAddressTest, UnnumberedInterfaceContributesItsSecondariesOnly) {
    et1().unnumberedIntfIdIs(Lanx::IntfId("Lo0"));
    primary(addressOf(1));
    secondary(addressOf(2));
    expectRoutes(setOf(2));
    primary(addressOf(3)); // what was not added is not withdrawn
    expectRoutes(setOf(2));
    et1().unnumberedIntfIdIs(Lanx::IntfId(""));
    expectRoutes(setOf(2)); // only the address is watched
    primary(addressOf(4));
    expectRoutes(setOf(2) + setOf(4));
    et1().unnumberedIntfIdIs(Lanx::IntfId("Lo0"));
    expectRoutes(setOf(2) + setOf(4));
    primary(addressOf(5)); // withdraws what the numbered interface had added
    expectRoutes(setOf(2));
    harness.deviceDel("default", "Et1");
    expectNoneOfTheInterface();
}

TEST_F(InterfaceAddressTest, DirectedBroadcastChangesTheTypeOfEveryBroadcastRoute) {
    primary(addressOf(1));
    secondary(addressOf(2));
    et1().directedBroadcastIs(true);
    expectRoutes(setOf(1, true) + setOf(2, true));
    secondary(addressOf(3));
    expectRoutes(setOf(1, true) + setOf(2, true) + setOf(3, true));
    et1().directedBroadcastIs(false);
    expectRoutes(setOf(1) + setOf(2) + setOf(3));
    primary("10.9.0.1/31");
    et1().directedBroadcastIs(true);
    expectRoutes(setOf(2, true) + setOf(3, true)
                 + std::vector<RouteRow>{{"10.9.0.0/31", 11, "Et1"}, {"10.9.0.1/32", 1, "Et1"}});
}

// The flag is applied without a filter: to an unnumbered primary, and to a secondary not in use.
// What comes of it has no reference and must go all the same.
TEST_F(InterfaceAddressTest, DirectedBroadcastLeavesNoRoutesBehind) {
    et1().unnumberedIntfIdIs(Lanx::IntfId("Lo0"));
    primary(addressOf(1));
    secondary(addressOf(2), false);
    et1().directedBroadcastIs(true);
    const auto broadcastOnly = [](int n) {
        const std::string net = "10." + std::to_string(n) + ".0.";
        return std::vector<RouteRow>{{net + "0/32", 3, "Et1"},
                                     {net + "255/32", 3, "Et1", "directed-broadcast"}};
    };
    expectRoutes(broadcastOnly(1) + broadcastOnly(2));
    harness.removeVrfs();
    EXPECT_EQ(harness.leftovers(), "");
    harness.vrfId("default", 0);
    et1().directedBroadcastIs(false);
    harness.secondaryDel("default", "Et1", addressOf(2));
    expectRoutes({{"10.1.0.0/32", 3, "Et1"}, {"10.1.0.255/32", 4, "Et1"}});
}

TEST_F(InterfaceAddressTest, ViaSetsOutliveTheRoutesThatUseThem) {
    primary("10.0.0.1/32");
    harness.settle();
    const auto before = harness.routes("default");
    const auto keys =
        harness.backlog("default").intfViaSetKeyStatus4()->intfViaSetKey(Lanx::IntfId("Et1"));
    primary("0.0.0.0/0");
    EXPECT_EQ(harness.routes("default"), before); // with a via behind it
    primary("10.0.0.1/32"); // gone and back before the drain: the old via sets serve on
    expectRoutes({{"10.0.0.1/32", 2, "Et1"}});
    EXPECT_EQ(harness.backlog("default").intfViaSetKeyStatus4()->intfViaSetKey(Lanx::IntfId("Et1")),
              keys);
}

} // namespace
} // namespace Routing::DirectNet
