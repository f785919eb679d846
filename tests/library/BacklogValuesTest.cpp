#include "directnet/backlog/IntfIdAndAddr.h"
#include "directnet/backlog/IntfIdAndPrefix.h"
#include "directnet/backlog/IpGenAddrWithMaskCompare.h"
#include "directnet/backlog/RouteKinds.h"
#include "tests/support/ValueProperties.h"

namespace TestSupport {

namespace {

using BacklogValues =
    testing::Types<Routing::DirectNet::IntfIdAndAddr, Routing::DirectNet::IntfIdAndPrefix,
                   Routing::DirectNet::IntfViaSetKey>;

} // namespace

INSTANTIATE_TYPED_TEST_SUITE_P(Backlog, ValueProperties, BacklogValues);

} // namespace TestSupport

namespace Routing::DirectNet {

namespace {

auto reference(const Lanx::IpGenAddrWithMask& address) {
    return std::tuple(static_cast<int>(address.af()), address.addr().bytes(), address.len());
}

auto reference(const IntfIdAndAddr& value) {
    return std::tuple(std::string(value.intfId().name()), reference(value.addrWithMask()),
                      value.sourceVrfId().value(), value.isVirtual() ? 1 : 0,
                      static_cast<int>(value.routeType()));
}

TEST(BacklogValues, ContributorsAreOrderedFieldByField) {
    TestSupport::RandomValues random(1);
    for (int round = 0; round < 20000; ++round) {
        const IntfIdAndAddr left = random.make<IntfIdAndAddr>();
        const IntfIdAndAddr right = random.make<IntfIdAndAddr>();
        ASSERT_EQ(left < right, reference(left) < reference(right)) << left << " " << right;
        const auto leftAddress = left.addrWithMask();
        const auto rightAddress = right.addrWithMask();
        ASSERT_EQ(IpGenAddrWithMaskCompare()(leftAddress, rightAddress),
                  reference(leftAddress) < reference(rightAddress));
    }
}

TEST(BacklogValues, TextFormIsTheNamedOne) {
    EXPECT_EQ(Orb::valueToStrep(IntfIdAndAddr(
                  Lanx::IntfId("Ethernet1"), Lanx::IpAddrWithMask::fromString("10.1.1.5/24"),
                  Vrf::VrfIdMap::VrfId(5), true, Fib::RouteType::connected)),
              "Value('Routing::DirectNet::IntfIdAndAddr', ** {'intfId': 'Ethernet1', "
              "'addrWithMask': '10.1.1.5/24', 'sourceVrfId': 5, 'isVirtual': True, "
              "'routeType': 11})");
    EXPECT_EQ(Orb::valueToStrep(IntfViaSetKey()),
              "Value('Routing::DirectNet::IntfViaSetKey', ** {'intfId': '', 'viaKey': "
              "Value('Routing::Rib::ViaKey', ** {'transport': 0, 'viaId': 0, 'vrfId': 16777215, "
              "'routingProtocol': 0}), 'viaSetKey': 0, 'rxViaSetKey': 0, 'rxBcastViaSetKey': 0, "
              "'directedBcastViaSetKey': 0})");
}

} // namespace

} // namespace Routing::DirectNet
