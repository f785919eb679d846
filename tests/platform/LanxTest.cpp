#include <arpa/inet.h>
#include <gtest/gtest.h>

#include <functional>
#include <set>
#include <sstream>

#include "platform/lanx/NamespaceName.h"
#include "platform/vrf/VrfName.h"
#include "tests/support/RandomValues.h"

namespace Lanx {

namespace {

using TestSupport::RandomValues;

/// The bits of an address, most significant first, as a text of zeros and ones.
std::string bitsOf(const AddressBytes& bytes, unsigned count) {
    std::string bits;
    for (unsigned bit = 0; bit < count; ++bit) {
        bits += (bytes[bit / 8] >> (7 - bit % 8) & 1) != 0 ? '1' : '0';
    }
    return bits;
}

/// Checks everything that masks an address against the text of its bits.
template <typename Addr>
void checkMasks(Addr address) {
    for (unsigned len = 0; len <= Addr::bits; ++len) {
        const AddrWithMask<Addr> withMask(address, len);
        const std::string bits = bitsOf(address.bytes(), Addr::bits);
        const std::string network = bits.substr(0, len) + std::string(Addr::bits - len, '0');
        ASSERT_EQ(bitsOf(withMask.subnet().addr().bytes(), Addr::bits), network) << withMask;
        ASSERT_EQ(withMask.networkAddr(), withMask.subnet().addr());
        ASSERT_EQ(withMask.subnet().len(), len);
        ASSERT_EQ(withMask.hostPrefix(), Prefix<Addr>(address, Addr::bits));
        const IpGenAddrWithMask gen = withMask;
        ASSERT_EQ(gen.subnet(), IpGenPrefix(withMask.subnet()));
        ASSERT_EQ(gen.hostPrefix(), IpGenPrefix(withMask.hostPrefix()));
        if constexpr (Addr::bits == 32) {
            ASSERT_EQ(bitsOf(withMask.broadcastAddr().bytes(), 32),
                      bits.substr(0, len) + std::string(32 - len, '1'));
        }
        if (bits != network) {
            ASSERT_THROW(Prefix<Addr>(address, len), Orb::RangeError);
            ASSERT_THROW(IpGenPrefix(address, len), Orb::RangeError);
        }
    }
}

TEST(Lanx, MaskHasAsManyBitsAsItsLength) {
    RandomValues random(4);
    for (int round = 0; round < 200; ++round) {
        checkMasks(random.make<IpAddr>());
        checkMasks(random.make<Ip6Addr>());
    }
}

TEST(Lanx, ContainsIgnoresHostBits) {
    RandomValues random(5);
    for (int round = 0; round < 20000; ++round) {
        const auto prefix = random.make<IpGenPrefix>();
        const auto other = random.make<IpGenPrefix>();
        const bool same = prefix.af() == other.af()
                          && bitsOf(prefix.addr().bytes(), prefix.len())
                                 == bitsOf(other.addr().bytes(), prefix.len());
        ASSERT_EQ(prefix.contains(other.addr()), same) << prefix << " " << other;
        ASSERT_EQ(prefix.contains(other), same && other.len() >= prefix.len());
        if (prefix.af() == AddressFamily::ipv4 && other.af() == AddressFamily::ipv4) {
            const IpPrefix prefix4(prefix.addr().v4(), prefix.len());
            ASSERT_EQ(prefix4.contains(other.addr().v4()), same);
        }
    }
}

template <typename T>
void expectFamilyAddressLengthOrder() {
    const auto reference = [](const T& value) {
        return std::tuple(static_cast<int>(value.af()), value.addr().bytes(), value.len());
    };
    RandomValues random(6);
    for (int round = 0; round < 20000; ++round) {
        const T left = random.make<T>();
        const T right = random.make<T>();
        ASSERT_EQ(left < right, reference(left) < reference(right)) << left << " " << right;
    }
}

TEST(Lanx, OrderIsFamilyThenAddressThenLength) {
    expectFamilyAddressLengthOrder<IpGenPrefix>();
    expectFamilyAddressLengthOrder<IpAddrWithMask>();
    expectFamilyAddressLengthOrder<IpGenAddrWithMask>();
}

TEST(Lanx, Ip6TextIsTheSystems) {
    RandomValues random(7);
    for (int round = 0; round < 20000; ++round) {
        const auto address = random.make<Ip6Addr>();
        char text[INET6_ADDRSTRLEN];
        inet_ntop(AF_INET6, address.bytes().data(), text, sizeof text);
        ASSERT_EQ(address.toString(), text);
    }
    EXPECT_EQ(Ip6Addr::fromString("2001:DB8:0:0:1:0:0:1").toString(), "2001:db8::1:0:0:1");
    EXPECT_EQ(Ip6Addr::fromString("::FFFF:10.0.0.1").toString(), "::ffff:10.0.0.1");
    // Never "::10.0.0.1": that spelling is deprecated.
    EXPECT_EQ(Ip6Addr::fromString("::a00:1").toString(), "::a00:1");
}

TEST(Lanx, SloppyAddressIsRefused) {
    using namespace std::string_literals;
    const auto expectRefused = [](const std::string& text) {
        EXPECT_THROW(IpGenAddrWithMask::fromString(text), Orb::ParseError) << text;
        EXPECT_THROW(IpGenPrefix::fromString(text), Orb::ParseError) << text;
    };
    for (const char* text : {"1.2.3/8",      "1.2.3.4",         "1.2.3.4/",
                             "/8",           "1.2.3.4.5/8",     "01.2.3.4/8",
                             "1.2.3.256/8",  "1.2.3.1000/8",    " 1.2.3.4/8",
                             "1.2.3.4 /8",   "1.2.3.4/ 8",      "1.2.3.4/08",
                             "1.2.3.4/8 ",   "1.2.3.4/+8",      "1.2.3.4/8/8",
                             "1.2.3.4/0032", "1..3.4/8",        "1.2.3./8",
                             "-1.2.3.4/8",   "0x1.2.3.4/8",     "::1",
                             ":::/8",        "1::2::3/8",       "::g/8",
                             "::1%lo/8",     "1:2:3:4:5:6:7/8", "1:2:3:4:5:6:7:8:9/8",
                             "::12345/8",    "::1.2.3.4.5/8",   " ::1/8"}) {
        expectRefused(text);
    }
    expectRefused("1.2.3.4\0/8"s);
    expectRefused("::1\0/8"s);
    EXPECT_THROW(IpAddrWithMask::fromString("::1/8"), Orb::ParseError);
    EXPECT_THROW(Ip6AddrWithMask::fromString("1.2.3.4/8"), Orb::ParseError);
    EXPECT_THROW(IpAddrWithMask::fromString(""), Orb::ParseError);
}

TEST(Lanx, OutOfRangeIsRefused) {
    const std::string notAPrefix = "Prefix::validAsPrefix != true not allowed";
    const std::string notALength = "AddrWithMask::len > ";
    const std::vector<std::pair<std::function<void()>, std::string>> cases{
        {[] { IpGenPrefix::fromString("10.1.1.5/24"); }, notAPrefix},
        {[] { IpGenPrefix::fromString("10.0.0.0/33"); }, notAPrefix},
        {[] { IpGenPrefix::fromString("::/129"); }, notAPrefix},
        {[] { IpPrefix(IpAddr(), 256); }, notAPrefix},
        {[] { IpGenPrefix(IpGenAddr(), 1); }, notAPrefix},
        {[] { IpPrefix::covering(IpAddr(), 33); }, notAPrefix},
        {[] { IpAddrWithMask(IpAddr(), 33); }, notALength},
        {[] { Ip6AddrWithMask(Ip6Addr(), 256); }, notALength},
        {[] { IpGenAddrWithMask(IpGenAddr(IpAddr()), 33); }, notALength},
        {[] { L3::VrfName(std::string(101, 'v')); },
         "VrfName::bytes > VrfName::maxLength not allowed"},
        {[] { NamespaceName(std::string(151, 'n')); }, "NamespaceName::bytes > 150 not allowed"}};
    for (const auto& [make, expected] : cases) {
        try {
            make();
            ADD_FAILURE() << "no " << expected;
        } catch (const Orb::RangeError& error) {
            EXPECT_NE(std::string(error.what()).find(expected), std::string::npos) << error.what();
        }
    }
    EXPECT_EQ(L3::VrfName(std::string(100, 'v')).value().size(), 100U);
    EXPECT_EQ(NamespaceName(std::string(150, 'n')).value().size(), 150U);
}

TEST(Lanx, LinkLocalEndsAtItsBoundary) {
    for (const char* text : {"169.254.0.0", "169.254.255.255", "fe80::", "febf:ffff::1"}) {
        EXPECT_TRUE(IpGenAddr::fromString(text).isLinkLocal()) << text;
    }
    for (const char* text :
         {"169.253.255.255", "169.255.0.0", "fec0::", "fe7f:ffff::", "254.128.0.1", "a9fe::", ""}) {
        EXPECT_FALSE(IpGenAddr::fromString(text).isLinkLocal()) << text;
    }
}

TEST(IntfId, RecordStaysWhereItIsWhenTheTableGrows) {
    const IntfId first("Ethernet1");
    const std::string_view name = first.name();
    for (int index = 0; index < 10000; ++index) {
        IntfId("Grow" + std::to_string(index));
    }
    EXPECT_EQ(name, "Ethernet1");
    EXPECT_EQ(IntfId(std::string("Ether") + "net1"), first);
    EXPECT_EQ(IntfId(""), IntfId());
}

TEST(IntfId, OrderIsThatOfUnsignedBytes) {
    const std::set<IntfId> ids = {IntfId("\x80"),       IntfId("b"),         IntfId("Ethernet2"),
                                  IntfId("Ethernet10"), IntfId("Ethernet1"), IntfId()};
    std::ostringstream out;
    for (const IntfId id : ids) {
        out << id << ",";
    }
    EXPECT_EQ(out.str(), ",Ethernet1,Ethernet10,Ethernet2,b,\x80,");
}

} // namespace

} // namespace Lanx
