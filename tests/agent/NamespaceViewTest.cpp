#include "agent/linux/NamespaceView.h"

#include <gtest/gtest.h>
#include <linux/if.h>
#include <linux/if_addr.h>
#include <linux/rtnetlink.h>
#include <map>
#include <string>

#include "tests/agent/PatchJson.h"

namespace Agent::Linux {
namespace {

using json = nlohmann::json;
using TestSupport::PatchJson;

constexpr std::uint32_t up = IFF_UP | IFF_RUNNING | IFF_LOWER_UP;

template <class Message>
Message message(int index, const std::string& local, std::uint32_t flags, std::uint8_t scope) {
    const auto address = Message::Address::fromString(local);
    return {.index = index, .local = address, .remote = address, .scope = scope, .flags = flags};
}

Ipv4AddressMessage added(int index, const std::string& local, std::uint32_t flags = 0,
                         std::uint8_t scope = RT_SCOPE_UNIVERSE) {
    return message<Ipv4AddressMessage>(index, local, flags, scope);
}

Ipv6AddressMessage added6(int index, const std::string& local, std::uint32_t flags = 0) {
    return message<Ipv6AddressMessage>(index, local, flags, RT_SCOPE_UNIVERSE);
}

template <class Message>
Message withPeer(Message message, const std::string& peer) {
    message.remote = Message::Address::fromString(peer);
    return message;
}

LinkMessage link(int index, const std::string& name, std::uint32_t flags = up) {
    return {.index = index, .name = Lanx::IntfId(name), .flags = flags, .mtu = 1500};
}

template <class Message>
Message removed(Message message) {
    message.removed = true;
    return message;
}

class NamespaceViewTest : public testing::Test {
  protected:
    bool apply(const auto&... messages) {
        bool certain = true;
        ((certain = view.apply(messages) && certain), ...);
        document.merge_patch(PatchJson::of(view.takePatch()));
        return certain;
    }

    /// The section's entry, null if it is absent.
    json at(const std::string& pointer) {
        return document.value(json::json_pointer(pointer), json());
    }

    NamespaceView view{"ns-red", "red"};
    json document = json::object();
};

TEST_F(NamespaceViewTest, PrimaryIsTheFirstOfTheNarrowestScopeNotTheFirstAdded) {
    EXPECT_TRUE(apply(link(3, "e3"), added(3, "10.0.0.1/24"), added(3, "10.1.0.1/24")));
    EXPECT_EQ(at("/ipv4/red/e3"),
              json::parse(R"({"address": "10.0.0.1/24", "secondary": {"10.1.0.1/24": true}})"));

    EXPECT_TRUE(apply(added(3, "10.2.0.1/24", 0, RT_SCOPE_HOST)));
    EXPECT_EQ(at("/ipv4/red/e3/address"), "10.2.0.1/24");
    EXPECT_TRUE(apply(added(3, "10.3.0.1/24", 0, RT_SCOPE_LINK),
                      removed(added(3, "10.2.0.1/24", 0, RT_SCOPE_HOST))));
    EXPECT_EQ(at("/ipv4/red/e3"), json::parse(R"({"address": "10.3.0.1/24",
        "secondary": {"10.0.0.1/24": true, "10.1.0.1/24": true}})"));
}

TEST_F(NamespaceViewTest, PromotionIsLeftToAListingAndNothingHalfDoneIsTold) {
    auto second = added(3, "10.0.0.2/24", IFA_F_SECONDARY);
    apply(link(3, "e3"), added(3, "10.0.0.1/24"), second, added(3, "10.9.0.1/24"));
    json before = document;

    EXPECT_FALSE(apply(removed(added(3, "10.0.0.1/24"))));
    EXPECT_EQ(document, before);
    EXPECT_FALSE(apply(added(3, "10.0.0.2/24")));
    EXPECT_EQ(document, before);

    ListedLinks listed;
    listed.add(link(3, "e3"));
    listed.add(added(3, "10.9.0.1/24"));
    listed.add(added(3, "10.0.0.2/24"));
    view.replaceOne(3, listed);
    EXPECT_EQ(PatchJson::of(view.takePatch()),
              json::parse(R"({"ipv4": {"red": {"e3": {"address": "10.9.0.1/24",
        "secondary": {"10.9.0.1/24": null}}}}})"));
}

TEST_F(NamespaceViewTest, AddressesThatDifferInTheirPeersCountOnce) {
    auto toNine = withPeer(added(3, "10.0.0.1/32"), "10.9.9.9/32");
    auto toEight = withPeer(added(3, "10.0.0.1/24"), "10.8.8.8/24");
    apply(link(3, "e3"), toNine, toEight, withPeer(added6(3, "fd00::1/64"), "fd00::9/64"));
    EXPECT_EQ(at("/ipv4/red/e3"), json::parse(R"({"address": "10.0.0.1/32"})"));
    EXPECT_EQ(at("/ipv6/red/e3"), json::parse(R"({"fd00::1/128": true})"));

    EXPECT_TRUE(apply(removed(toNine)));
    EXPECT_EQ(at("/ipv4/red/e3/address"), "10.0.0.1/32");
    EXPECT_TRUE(apply(removed(toEight)));
    EXPECT_FALSE(document["ipv4"]["red"].contains("e3"));
}

TEST_F(NamespaceViewTest, Ipv6AddressCountsOnlyWhileItMayBeUsed) {
    const std::pair<std::uint32_t, bool> cases[]{
        {IFA_F_TENTATIVE, false},
        {0, true},
        {IFA_F_TENTATIVE | IFA_F_OPTIMISTIC, true},
        {IFA_F_DADFAILED | IFA_F_TENTATIVE | IFA_F_OPTIMISTIC, false},
        {IFA_F_DEPRECATED | IFA_F_PERMANENT, true},
        {IFA_F_DADFAILED, false},
        {IFA_F_SECONDARY, true}};
    apply(link(3, "e3"));
    for (const auto& [flags, active] : cases) {
        EXPECT_TRUE(apply(added6(3, "fd00::1/64", flags)));
        EXPECT_EQ(at("/ipv6/red/e3/fd00::1~164") == true, active) << flags;
    }
    // It can come back with another length only, and must not be left in both forms.
    apply(added6(3, "fd00::1/72"));
    EXPECT_EQ(at("/ipv6/red/e3"), json::parse(R"({"fd00::1/72": true})"));
}

LinkMessage vrfDevice(int index, const std::string& name, std::uint32_t table) {
    LinkMessage device = link(index, name);
    device.vrfTable = table;
    return device;
}

LinkMessage inVrf(LinkMessage link, int device) {
    link.master = device;
    link.isInVrf = true;
    return link;
}

TEST_F(NamespaceViewTest, AddressesFollowTheirLinkBetweenVrfsButForThoseOfIpv6) {
    apply(link(3, "e3"), added(3, "10.0.0.1/24"), added6(3, "fd00::1/64"),
          vrfDevice(9, "blue", 100), added(9, "10.9.9.9/32"));
    EXPECT_EQ(view.takeVrfDevices(), (std::vector{VrfDevice{9, Lanx::IntfId("blue"), 100}}));
    EXPECT_FALSE(view.takeVrfDevices());
    EXPECT_EQ(at("/ipv4"), json::parse(R"({"red": {"e3": {"address": "10.0.0.1/24"}}})"));

    EXPECT_TRUE(apply(inVrf(link(3, "e3"), 9)));
    EXPECT_EQ(document["ipv4"]["red"], json::object()) << "nobody has made the device a VRF yet";
    EXPECT_EQ(document["ipv6"]["red"], json::object());

    view.vrfIs(9, "blue");
    apply();
    EXPECT_EQ(at("/ipv4/blue"), json::parse(R"({"e3": {"address": "10.0.0.1/24"},
                                                "blue": {"address": "10.9.9.9/32"}})"));
    EXPECT_TRUE(apply(added6(3, "fd00::2/64")));
    EXPECT_EQ(at("/ipv6/blue"), json::parse(R"({"e3": {"fd00::2/64": true}})"));
    EXPECT_EQ(at("/kernel/ns-red").size(), 2) << "devices stay where they are";

    apply(link(3, "e3"), removed(vrfDevice(9, "blue", 100)));
    EXPECT_EQ(at("/ipv4"), json::parse(R"({"red": {"e3": {"address": "10.0.0.1/24"}},
                                           "blue": {}})"));
    EXPECT_EQ(view.takeVrfDevices(), std::vector<VrfDevice>());
}

TEST_F(NamespaceViewTest, PortsOfABridgeInAVrfStayInTheNamespace) {
    LinkMessage port = link(4, "port");
    port.master = 3;
    apply(vrfDevice(9, "blue", 100), inVrf(link(3, "bridge"), 9), port, added(3, "10.0.0.1/24"),
          added(4, "10.4.0.1/24"));
    view.vrfIs(9, "blue");
    apply();
    EXPECT_EQ(at("/ipv4"), json::parse(R"({"blue": {"bridge": {"address": "10.0.0.1/24"}},
                                           "red": {"port": {"address": "10.4.0.1/24"}}})"));
}

TEST_F(NamespaceViewTest, AddressesThatStandNowhereAreToldWithTheirLink) {
    apply(link(3, "e3"), added(3, "10.0.0.1/24"), added6(3, "fd00::1/64"),
          added6(3, "fd00::2/64", IFA_F_TENTATIVE),
          added6(3, "fd00::3/64", IFA_F_TENTATIVE | IFA_F_DADFAILED));
    const auto unpublished = [&] {
        std::map<std::string, std::string> told;
        const auto link = view.named(Lanx::IntfId("e3"));
        for (const auto& found : link->unpublished) {
            told[found.address.toString()] = found.obstacle;
        }
        return told;
    };
    using Told = std::map<std::string, std::string>;
    EXPECT_EQ(unpublished(), (Told{{"fd00::2/64", "tentative"}, {"fd00::3/64", "duplicate"}}));
    EXPECT_TRUE(apply(added6(3, "fd00::2/64")));
    EXPECT_EQ(unpublished(), (Told{{"fd00::3/64", "duplicate"}}));
    apply(vrfDevice(9, "blue", 100), inVrf(link(3, "e3"), 9), added6(3, "fd00::4/64"));
    EXPECT_EQ(unpublished(), (Told{{"10.0.0.1/24", ""}, {"fd00::4/64", ""}}));
    EXPECT_EQ(view.named(Lanx::IntfId("e3"))->vrfDevice, 9);
    view.vrfIs(9, "blue");
    EXPECT_EQ(unpublished(), Told());
    EXPECT_FALSE(view.named(Lanx::IntfId("e4")));
}

} // namespace
} // namespace Agent::Linux
