#include <random>

#include "tests/library/VirtualIpFixture.h"

namespace Routing::DirectNet {
namespace {

using Lanx::IntfId;

class VirtualIpRoutesTest : public VirtualIpFixture<VirtualIpFamily4> {
  protected:
    std::uint32_t references(const char* intf) const {
        return sm->ivskStatus()->vskRefcountByIntfId(IntfId(intf));
    }
};

TEST_F(VirtualIpRoutesTest, subnetFlagTouchesMoreThanSubnets) {
    startVrf();
    carry("10.1.1.1/24", "et1");
    carry("10.1.2.1/32", "et1");
    const std::string hosts = "10.1.1.1/32 1 et1\n10.1.2.1/32 1 et1\n";
    EXPECT_EQ(contributors(), hosts);
    platform->subnetRoutesIs(true);
    EXPECT_EQ(contributors(), "10.1.1.0/24 11 et1\n" + hosts);
    EXPECT_EQ(references("et1"), 2U);
    platform->subnetRoutesIs(false);
    EXPECT_EQ(contributors(), hosts);
    platform->subnetRoutesIs(true);
    uncarry("10.1.1.1/24", "et1");
    EXPECT_EQ(contributors(), "10.1.2.1/32 1 et1\n");
    remove("10.1.2.1/32");
    expectNothingLeft();
}

TEST_F(VirtualIpRoutesTest, addressesFromBeforeTheVrfCountTwice) {
    platform->subnetRoutesIs(true);
    carry("10.1.1.1/24", "et1");
    carry("10.1.1.1/24", "et2");
    startVrf();
    EXPECT_EQ(contributors(),
              "10.1.1.0/24 11 et1\n10.1.1.0/24 11 et2\n10.1.1.1/32 1 et1\n10.1.1.1/32 1 et2\n");
    EXPECT_EQ(references("et1"), 1U);
    uncarry("10.1.1.1/24", "et1");
    EXPECT_EQ(contributors(), "10.1.1.0/24 11 et2\n10.1.1.1/32 1 et2\n");
    EXPECT_EQ(viaSetCollection().size(), 4U) << "those of et2";
    carry("10.1.1.1/24", "et2", false); // listed, but not carried
    expectNothingLeft();
}

TEST_F(VirtualIpRoutesTest, addressThatMustYieldNothingTakesViaSets) {
    startVrf();
    for (const char* address : {"0.0.0.0/0", "0.0.0.0/24", "169.254.1.1/24"}) {
        platform->subnetRoutesIs(false);
        carry(address, "et1");
        platform->subnetRoutesIs(true);
        expectNothingLeft();
    }
    stopVrf();
    startVrf();
    expectNothingLeft();
}

TEST_F(VirtualIpRoutesTest, replacedObjectLeavesInterfacesOfTheOldOne) {
    startVrf();
    carry("10.1.1.1/24", "et1");
    carry("10.1.1.1/24", "et2");
    const auto table = helper->findOrCreateVrfVirtualIpStatus("red");
    const auto other = Orb::makePtr<VirtualIp::VirtualIpIntfStatus>(
        VirtualIp::VirtualIpIntfStatus::Arguments{key("10.1.1.1/24")});
    other->intfIdIs(IntfId("et2"), true);
    other->intfIdIs(IntfId("et3"), true);
    table->virtualIpIs(other);
    EXPECT_EQ(contributors(), "10.1.1.1/32 1 et2\n10.1.1.1/32 1 et3\n");
    carry("10.1.1.1/24", "et4"); // the old one is not listened to any more
    other->intfIdDel(IntfId("et3"));
    EXPECT_EQ(contributors(), "10.1.1.1/32 1 et2\n");
    table->virtualIpDel(key("10.1.1.1/24"));
    expectNothingLeft();
}

TEST_F(VirtualIpRoutesTest, vrfGoesWithItsAddressesStillThere) {
    platform->subnetRoutesIs(true);
    startVrf();
    carry("10.1.1.1/24", "et1");
    carry("10.1.2.1/24", "et2");
    // Of its own that nobody counts, such as a subnet flag set in the middle of things leaves.
    viaSets->findOrCreateViaSetKey(IntfId("et3"), backlog->vrfId(), *sm->ivskStatus());
    // As the container does before its machines go.
    for (const char* intf : {"et1", "et2"}) {
        viaSets->delViaSetKey(IntfId(intf), *backlog->intfViaSetKeyStatus4());
    }
    vias->doDeleteViasForVrf(backlog->vrfId());
    stopVrf();
    expectNothingLeft();
    carry("10.1.3.1/24", "et1");
    expectNothingLeft();
}

TEST_F(VirtualIpRoutesTest, viaSetsOfInterfacesAndVirtualAddressesMixUp) {
    startVrf();
    IntfViaSetKeyStatus& own = *backlog->intfViaSetKeyStatus4();
    const IntfViaSetKey key = viaSets->findOrCreateViaSetKey(IntfId("et1"), backlog->vrfId(), own);
    own.incIntfVskRefcount(IntfId("et1"));
    carry("10.1.1.1/24", "et1");
    EXPECT_EQ(viaSetCollection().size(), 8U);
    remove("10.1.1.1/24");
    EXPECT_EQ(own.intfViaSetKey(IntfId("et1")), key);
    carry("10.1.1.1/24", "et1");
    viaSets->releaseViaSetKey(IntfId("et1"), own);
    EXPECT_EQ(contributors(), "10.1.1.1/32 1 et1\n") << "which checks its via set";
    stopVrf();
    expectNothingLeft();
}

TEST_F(VirtualIpRoutesTest, anotherOrderOfChangesEndsElsewhere) {
    std::mt19937 random(20240611);
    const char* const addresses[] = {"10.1.1.1/24", "10.1.1.2/24", "10.1.1.2/25", "10.2.0.1/32",
                                     "169.254.0.1/16"};
    const char* const intfs[] = {"et1", "et2", "et3"};
    for (int round = 0; round < 200; ++round) {
        for (int step = 0; step < 30; ++step) {
            const char* address = addresses[random() % std::size(addresses)];
            const char* intf = intfs[random() % std::size(intfs)];
            switch (random() % 8) {
            case 0:
                remove(address);
                break;
            case 1:
                uncarry(address, intf);
                break;
            case 2:
                platform->subnetRoutesIs(random() % 2 != 0);
                break;
            case 3:
                sm == nullptr ? startVrf() : stopVrf();
                break;
            default:
                carry(address, intf, random() % 3 != 0);
            }
        }
        if (sm == nullptr) {
            startVrf();
        }
        const std::string end = contributors();
        stopVrf();
        expectNothingLeft();
        startVrf();
        ASSERT_EQ(contributors(), end) << "round " << round;
        stopVrf();
    }
}

class VirtualIp6RoutesTest : public VirtualIpFixture<VirtualIpFamily6> {};

TEST_F(VirtualIp6RoutesTest, ipv6AddressYieldsMoreOrLessThanAHostRoute) {
    startVrf();
    statusSm->subnetRouteEnabledIs(true);
    carry("2001:db8::9", "et1");
    carry("fe80::1", "et1");
    carry("::", "et1");
    tables->vrfVirtualIpStatus("red")->subnetRouteEnabledIs(true);
    EXPECT_EQ(contributors(), "2001:db8::9/128 1 et1\n");
    EXPECT_EQ(viaSetCollection().size(), 2U);
    stopVrf();
    expectNothingLeft();
}

} // namespace
} // namespace Routing::DirectNet
