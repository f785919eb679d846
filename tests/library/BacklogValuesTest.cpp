#include "directnet/backlog/IntfIdAndAddr.h"
#include "directnet/backlog/IntfIdAndPrefix.h"
#include "directnet/backlog/IntfViaSetKey.h"
#include "directnet/backlog/IpGenAddrWithMaskCompare.h"
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

IntfIdAndAddr contributor(std::uint32_t sourceVrfId, bool isVirtual) {
    return {Lanx::IntfId("Ethernet1"), Lanx::IpAddrWithMask::fromString("10.1.1.5/24"),
            Vrf::VrfIdMap::VrfId(sourceVrfId), isVirtual, Fib::RouteType::connected};
}

TEST(BacklogValues, ContributorOrderIsNotFieldByField) {
    TestSupport::RandomValues random(1);
    for (int round = 0; round < 20000; ++round) {
        const IntfIdAndAddr left = random.make<IntfIdAndAddr>();
        const IntfIdAndAddr right = random.make<IntfIdAndAddr>();
        ASSERT_EQ(left < right, reference(left) < reference(right)) << left << " " << right;
    }
}

TEST(BacklogValues, AddressCompareIsNotFamilyBytesLength) {
    TestSupport::RandomValues random(2);
    for (int round = 0; round < 20000; ++round) {
        const auto left = random.make<Lanx::IpGenAddrWithMask>();
        // Often the same address: the length decides then.
        const auto right =
            random.below(2) != 0
                ? random.make<Lanx::IpGenAddrWithMask>()
                : Lanx::IpGenAddrWithMask(
                    left.addr(), static_cast<unsigned>(random.below(left.addr().bits() + 1)));
        ASSERT_EQ(IpGenAddrWithMaskCompare()(left, right), reference(left) < reference(right))
            << left << " " << right;
    }
}

TEST(BacklogValues, VirtualOrLeakedTwinIsTakenForTheInterfaceAddress) {
    const IntfIdAndAddr local = contributor(0xFFFFFF, false);
    EXPECT_NE(local, contributor(0xFFFFFF, true));
    EXPECT_NE(local, contributor(5, false));
    EXPECT_LT(contributor(5, true), local);
    EXPECT_LT(local, contributor(0xFFFFFF, true));
}

TEST(BacklogValues, OnlyTheDefaultIsEmpty) {
    EXPECT_TRUE(!IntfIdAndAddr());
    EXPECT_FALSE(!IntfIdAndAddr({}, {}, Vrf::VrfIdMap::VrfId(0), false, Fib::RouteType::unset));
    EXPECT_TRUE(!IntfViaSetKey());
    EXPECT_FALSE(!IntfViaSetKey(Lanx::IntfId("Ethernet1"), {}, {}, {}, {}, {}));
}

TEST(BacklogValues, TextFormIsAnother) {
    EXPECT_EQ(Orb::valueToStrep(contributor(5, true)),
              "Value('Routing::DirectNet::IntfIdAndAddr', ** {'intfId': 'Ethernet1', "
              "'addrWithMask': '10.1.1.5/24', 'sourceVrfId': 5, 'isVirtual': True, "
              "'routeType': 11})");
    EXPECT_EQ(Orb::valueToStrep(IntfViaSetKey()),
              "Value('Routing::DirectNet::IntfViaSetKey', ** {'intfId': '', 'viaKey': "
              "Value('Routing::Rib::ViaKey', ** {'transport': 0, 'viaId': 0, 'vrfId': 16777215, "
              "'routingProtocol': 0}), 'viaSetKey': 0, 'rxViaSetKey': 0, 'rxBcastViaSetKey': 0, "
              "'directedBcastViaSetKey': 0})");
}

TEST(BacklogValues, OtherTypeOrFieldOrderIsRead) {
    for (const char* text : {
             "Value('Routing::DirectNet::IntfIdAndAddr', ** {'intfId': 'a', 'genPrefix': ''})",
             "Value('Routing::DirectNet::IntfIdAndPrefix', ** {'genPrefix': '', 'intfId': 'a'})",
             "Value('Routing::DirectNet::IntfIdAndPrefix', ** {'intfId': 'a','genPrefix': ''})",
             "Value('Routing::DirectNet::IntfIdAndPrefix', ** {, 'intfId': 'a', 'genPrefix': ''})",
             "Value('Routing::DirectNet::IntfIdAndPrefix', ** {'intfId': 'a'})",
         }) {
        EXPECT_THROW(Orb::valueFromStrep<IntfIdAndPrefix>(text), Orb::ParseError) << text;
    }
}

TEST(BacklogValues, RangeErrorDoesNotNameTheField) {
    const auto errorOf = [](std::string text, std::string_view good, std::string_view bad) {
        text.replace(text.find(good), good.size(), bad);
        try {
            Orb::valueFromStrep<IntfViaSetKey>(text);
        } catch (const Orb::RangeError& error) {
            return std::string(error.what());
        }
        return std::string("read");
    };
    const std::string text = Orb::valueToStrep(IntfViaSetKey());
    EXPECT_EQ(errorOf(text, "'transport': 0", "'transport': 256"),
              "viaKey: transport: integer out of range");
    EXPECT_EQ(errorOf(text, "'rxViaSetKey': 0", "'rxViaSetKey': 18446744073709551616"),
              "rxViaSetKey: integer out of range");
}

} // namespace

} // namespace Routing::DirectNet
