#include "agent/linux/RouteMessage.h"
#include "agent/base/Utf8.h"

#include <cstring>
#include <gtest/gtest.h>
#include <linux/rtnetlink.h>
#include <set>
#include <string>
#include <vector>

namespace Agent::Linux {
namespace {

/// A netlink message in a buffer that ends where the message does, so that a sanitizer sees every
/// read beyond it.
class Message {
  public:
    template <class Body>
    Message(int type, const Body& body) {
        nlmsghdr header{};
        header.nlmsg_type = static_cast<std::uint16_t>(type);
        append(&header, sizeof header);
        append(&body, sizeof body);
    }

    /// `length` overrides the length that the attribute claims for its data.
    Message& with(int type, const std::string& data, int length = -1) {
        auto claimed =
            static_cast<std::size_t>(length < 0 ? static_cast<int>(data.size()) : length);
        nlattr attribute{static_cast<std::uint16_t>(sizeof(nlattr) + claimed),
                         static_cast<std::uint16_t>(type)};
        append(&attribute, sizeof attribute);
        append(data.data(), data.size());
        bytes_.resize(NLMSG_ALIGN(bytes_.size()));
        return *this;
    }

    const nlmsghdr& header() {
        auto size = static_cast<std::uint32_t>(bytes_.size());
        std::memcpy(bytes_.data(), &size, sizeof size);
        bytes_.shrink_to_fit();
        return *reinterpret_cast<const nlmsghdr*>(bytes_.data());
    }

  private:
    void append(const void* data, std::size_t size) {
        const auto* from = static_cast<const char*>(data);
        bytes_.insert(bytes_.end(), from, from + size);
    }

    std::vector<char> bytes_;
};

ifinfomsg linkBody(unsigned char family = AF_UNSPEC, int index = 3) {
    ifinfomsg body{};
    body.ifi_family = family;
    body.ifi_index = index;
    return body;
}

ifaddrmsg addressBody(unsigned char family, unsigned char length) {
    ifaddrmsg body{};
    body.ifa_family = family;
    body.ifa_prefixlen = length;
    body.ifa_index = 3;
    return body;
}

TEST(RouteMessageTest, BridgePortAndMalformedLinksAreNotLinks) {
    auto name = [](Message message, const std::string& text, int length = -1) {
        auto link = LinkMessage::parse(message.with(IFLA_IFNAME, text + '\0', length).header());
        return link ? std::string(link->name.name()) : "none";
    };
    EXPECT_EQ(name(Message(RTM_NEWLINK, linkBody()), "e1"), "e1");
    EXPECT_EQ(name(Message(RTM_NEWLINK, linkBody()), "e1", 2), "none") << "not terminated";
    EXPECT_EQ(name(Message(RTM_NEWLINK, linkBody()), "e\xff\xc3\xa4"), "e\\xff\\xc3\\xa4");
    EXPECT_EQ(name(Message(RTM_NEWLINK, linkBody()), "e\xc3\xa4"), "e\xc3\xa4");
    EXPECT_EQ(name(Message(RTM_DELLINK, linkBody(AF_BRIDGE)), "e1"), "none");
    EXPECT_EQ(name(Message(RTM_NEWLINK, linkBody(AF_UNSPEC, 0)), "e1"), "none");
    EXPECT_EQ(name(Message(RTM_NEWLINK, linkBody()), ""), "none");
    EXPECT_EQ(name(Message(RTM_NEWLINK, linkBody()), "e1", 4000), "none") << "beyond the end";
    EXPECT_EQ(name(Message(RTM_NEWLINK, 'x'), ""), "none") << "too short for a body";
    EXPECT_EQ(name(Message(RTM_NEWROUTE, linkBody()), "e1"), "none");
}

std::string number(std::uint32_t value) {
    return {reinterpret_cast<const char*>(&value), sizeof value};
}

/// An attribute as it stands in another.
std::string nested(int type, const std::string& data) {
    const nlattr attribute{static_cast<std::uint16_t>(sizeof(nlattr) + data.size()),
                           static_cast<std::uint16_t>(type)};
    std::string text(reinterpret_cast<const char*>(&attribute), sizeof attribute);
    text += data;
    text.resize(NLMSG_ALIGN(text.size()));
    return text;
}

TEST(RouteMessageTest, AddressesBelongToTheVrfDeviceThatALinkIsOrIsAPortOf) {
    const auto vrfDevice = [](const std::string& linkInfo) {
        Message message(RTM_NEWLINK, linkBody());
        message.with(IFLA_IFNAME, std::string("e1") + '\0').with(IFLA_MASTER, number(7));
        return LinkMessage::parse(message.with(IFLA_LINKINFO, linkInfo).header())->vrfDevice();
    };
    const std::string kind = nested(IFLA_INFO_KIND, "vrf");
    EXPECT_EQ(vrfDevice(nested(IFLA_INFO_KIND, "veth") + nested(IFLA_INFO_SLAVE_KIND, "vrf")), 7);
    EXPECT_EQ(vrfDevice(nested(IFLA_INFO_SLAVE_KIND, "bridge")), 0);
    EXPECT_EQ(vrfDevice(kind + nested(IFLA_INFO_DATA, nested(IFLA_VRF_TABLE, number(100)))), 3);
    EXPECT_EQ(vrfDevice(kind), 0) << "no table";
    EXPECT_EQ(vrfDevice(kind + nested(IFLA_INFO_DATA, nested(IFLA_VRF_TABLE, "10"))), 0) << "short";
    EXPECT_EQ(vrfDevice("v"), 0) << "malformed";
}

TEST(RouteMessageTest, DifferentLinkNamesStayDifferentAndOrdinaryOnesAsTheyAre) {
    EXPECT_EQ(documentName("Ethernet1/2.100:a b\\c"), "Ethernet1/2.100:a b\\c");
    EXPECT_EQ(documentName("\xc3\xa4"), "\xc3\xa4");
    // All names of up to five of these, which make up escapes and characters of two bytes.
    const std::string bytes = "\\xc35\xff\xc3\xa4";
    std::vector<std::string> names{""};
    std::set<std::string> written;
    for (std::size_t i = 0; i < names.size() && names[i].size() <= 5; ++i) {
        const std::string name = names[i];
        const std::string text = documentName(name);
        EXPECT_TRUE(isUtf8(text));
        EXPECT_TRUE(written.insert(text).second) << text;
        for (const char byte : bytes) {
            names.push_back(name + byte);
        }
    }
}

TEST(RouteMessageTest, MalformedAddressesAreNotAddresses) {
    auto own = [](Message& message) -> std::string {
        const auto parsed = parseRouteMessage(message.header());
        if (!parsed) {
            return "none";
        }
        return std::get<Ipv4AddressMessage>(*parsed).own().toString();
    };
    std::string ten("\x0a\0\0\1", 4);
    std::string nine("\x09\0\0\1", 4);
    auto make = [](unsigned char family, unsigned char length) {
        return Message(RTM_NEWADDR, addressBody(family, length));
    };
    EXPECT_EQ(own(make(AF_INET, 24).with(IFA_LOCAL, ten).with(IFA_ADDRESS, ten)), "10.0.0.1/24");
    EXPECT_EQ(own(make(AF_INET, 24).with(IFA_LOCAL, ten).with(IFA_ADDRESS, nine)), "10.0.0.1/32");
    EXPECT_EQ(own(make(AF_INET, 24).with(IFA_ADDRESS, nine)), "9.0.0.1/24");
    EXPECT_EQ(own(make(AF_INET, 33).with(IFA_LOCAL, ten)), "none");
    EXPECT_EQ(own(make(AF_INET6, 64).with(IFA_ADDRESS, ten)), "none");
    EXPECT_EQ(own(make(AF_INET, 24).with(IFA_LOCAL, std::string(16, '\1'))), "none");
    EXPECT_EQ(own(make(AF_INET, 24).with(IFA_LOCAL, std::string(4, '\0'))), "none");
    EXPECT_EQ(own(make(AF_INET, 24).with(IFA_LOCAL, ten).with(IFA_FLAGS, "x")), "none");
    EXPECT_EQ(own(make(AF_MPLS, 24).with(IFA_LOCAL, ten)), "none");
}

} // namespace
} // namespace Agent::Linux
