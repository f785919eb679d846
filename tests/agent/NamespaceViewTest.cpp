#include "agent/linux/NamespaceView.h"

#include <algorithm>
#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <linux/if.h>
#include <linux/if_addr.h>
#include <linux/rtnetlink.h>
#include <map>
#include <random>

namespace Agent::Linux {
namespace {

using json = nlohmann::json;

constexpr std::uint32_t up = IFF_UP | IFF_RUNNING | IFF_LOWER_UP;

Address address(const std::string& text) {
    auto slash = text.find('/');
    std::string bytes = text.substr(0, slash);
    Address address;
    address.family = text.find(':') == std::string::npos ? AF_INET : AF_INET6;
    address.length = static_cast<std::uint8_t>(std::stoi(text.substr(slash + 1)));
    ::inet_pton(address.family, bytes.c_str(), address.bytes.data());
    return address;
}

AddressMessage added(int index, const std::string& local, std::uint32_t flags = 0,
                     std::uint8_t scope = RT_SCOPE_UNIVERSE) {
    return {index, address(local), address(local), scope, flags, false};
}

AddressMessage withPeer(AddressMessage message, const std::string& peer) {
    message.remote = address(peer);
    return message;
}

AddressMessage removed(AddressMessage message) {
    message.removed = true;
    return message;
}

LinkMessage link(int index, const std::string& name, std::uint32_t flags = up) {
    return {index, name, flags, 0, 0, false};
}

LinkMessage removed(LinkMessage message) {
    message.removed = true;
    return message;
}

class NamespaceViewTest : public testing::Test {
  protected:
    bool apply(const auto&... messages) {
        bool certain = true;
        ((certain = view.apply(messages) && certain), ...);
        document.merge_patch(view.takePatch());
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

    view.replaceOne(3, link(3, "e3"), {added(3, "10.9.0.1/24"), added(3, "10.0.0.2/24")});
    EXPECT_EQ(view.takePatch(), json::parse(R"({"ipv4": {"red": {"e3": {"address": "10.9.0.1/24",
        "secondary": {"10.9.0.1/24": null}}}}})"));
}

TEST_F(NamespaceViewTest, AddressesThatDifferInTheirPeersCountOnce) {
    auto toNine = withPeer(added(3, "10.0.0.1/32"), "10.9.9.9/32");
    auto toEight = withPeer(added(3, "10.0.0.1/24"), "10.8.8.8/24");
    apply(link(3, "e3"), toNine, toEight, withPeer(added(3, "fd00::1/64"), "fd00::9/64"));
    EXPECT_EQ(at("/ipv4/red/e3"), json::parse(R"({"address": "10.0.0.1/32"})"));
    EXPECT_EQ(at("/ipv6/red/e3"), json::parse(R"({"fd00::1/128": true})"));

    EXPECT_TRUE(apply(removed(toNine)));
    EXPECT_EQ(at("/ipv4/red/e3/address"), "10.0.0.1/32");
    EXPECT_TRUE(apply(removed(toEight)));
    EXPECT_FALSE(document["ipv4"]["red"].contains("e3"));
}

TEST_F(NamespaceViewTest, Ipv6AddressCountsOnlyWhileItMayBeUsed) {
    struct Case {
        std::uint32_t flags;
        bool active;
    };
    apply(link(3, "e3"));
    for (const Case& c : {Case{IFA_F_TENTATIVE, false}, Case{0, true},
                          Case{IFA_F_TENTATIVE | IFA_F_OPTIMISTIC, true},
                          Case{IFA_F_DADFAILED | IFA_F_TENTATIVE | IFA_F_OPTIMISTIC, false},
                          Case{IFA_F_DEPRECATED | IFA_F_PERMANENT, true},
                          Case{IFA_F_DADFAILED, false}, Case{IFA_F_SECONDARY, true}}) {
        EXPECT_TRUE(apply(added(3, "fd00::1/64", c.flags)));
        EXPECT_EQ(at("/ipv6/red/e3/fd00::1~164") == true, c.active) << c.flags;
    }
    // It can come back with another length only, and must not be left in both forms.
    apply(added(3, "fd00::1/72"));
    EXPECT_EQ(at("/ipv6/red/e3"), json::parse(R"({"fd00::1/72": true})"));
}

TEST_F(NamespaceViewTest, RenameSwapsWhatTwoNamesMean) {
    apply(link(3, "a"), link(4, "b", IFF_UP), added(3, "10.0.0.3/24"), added(4, "10.0.0.4/24"),
          added(4, "fd00::4/64"), added(4, "10.0.0.5/24", IFA_F_SECONDARY));
    json swapped = document;
    for (const auto& section : {"/ipv4/red", "/kernel/ns-red"}) {
        std::swap(swapped[json::json_pointer(section)]["a"],
                  swapped[json::json_pointer(section)]["b"]);
    }
    swapped["kernel"]["ns-red"]["a"]["device"] = "a";
    swapped["kernel"]["ns-red"]["b"]["device"] = "b";
    swapped["ipv6"]["red"] = json::parse(R"({"a": {"fd00::4/64": true}})");

    EXPECT_TRUE(apply(link(3, "tmp"), link(4, "a", IFF_UP), link(3, "b")));
    EXPECT_EQ(document, swapped);
    // Listed one after the other, each in turn claims the name the other still has.
    view.replaceOne(3, link(3, "a"), {added(3, "10.0.0.3/24")});
    view.replaceOne(4, link(4, "b"), {});
    document.merge_patch(view.takePatch());
    EXPECT_EQ(at("/kernel/ns-red"), json::parse(R"({"a": {"device": "a", "running": true},
                                                    "b": {"device": "b", "running": true}})"));
    EXPECT_EQ(at("/ipv4/red"), json::parse(R"({"a": {"address": "10.0.0.3/24"}})"));
}

TEST_F(NamespaceViewTest, AddressesDoNotSurviveTheirLinkIntoTheNextOfItsIndex) {
    apply(link(3, "a"), added(3, "10.0.0.1/24"), added(3, "fd00::1/64"));
    EXPECT_TRUE(apply(removed(link(3, "a")), link(3, "b")));
    EXPECT_EQ(at("/kernel/ns-red"), json::parse(R"({"b": {"device": "b", "running": true}})"));
    EXPECT_EQ(at("/ipv4/red"), json::object());
    EXPECT_EQ(at("/ipv6/red"), json::object());
    EXPECT_FALSE(apply(added(7, "10.0.0.1/24"))) << "a link that nobody told of";
}

TEST_F(NamespaceViewTest, LinkStateChangePutsSilentIpv6WithdrawalInDoubt) {
    apply(link(3, "a"));
    LinkMessage enslaved = link(3, "a");
    enslaved.master = 9;
    LinkMessage flapped = enslaved;
    flapped.changed = IFF_UP;
    LinkMessage promiscuous = enslaved;
    promiscuous.flags |= IFF_PROMISC;
    promiscuous.changed = IFF_PROMISC;
    EXPECT_FALSE(apply(enslaved));
    EXPECT_FALSE(apply(flapped));
    EXPECT_TRUE(apply(promiscuous));
    EXPECT_FALSE(apply(link(3, "a", IFF_UP)));
    EXPECT_EQ(at("/kernel/ns-red/a/running"), false);
}

/// The kernel's own bookkeeping, as plain lists.
class Kernel {
  public:
    explicit Kernel(unsigned seed) : random_(seed) {}

    /// Changes something and returns what the kernel announces.
    std::vector<std::variant<LinkMessage, AddressMessage>> step() {
        announced_.clear();
        int index = pick(1, 4);
        if (!links_.contains(index)) {
            changeLink({index, freeName(), up, ~0U, 0, false});
            return announced_;
        }
        switch (pick(0, 11)) {
        case 0:
            removeLink(index);
            break;
        case 1:
            links_.at(index).changed = 0;
            links_.at(index).name = freeName();
            changeLink(links_.at(index));
            break;
        case 2:
            links_.at(index).flags ^= IFF_RUNNING;
            links_.at(index).changed = IFF_RUNNING;
            changeLink(links_.at(index));
            break;
        case 3:
        case 4:
        case 5:
            removeAddress(index);
            break;
        default:
            addAddress(index);
        }
        return announced_;
    }

    std::vector<LinkMessage> links() const {
        std::vector<LinkMessage> listed;
        for (const auto& [index, link] : links_) {
            listed.push_back(link);
        }
        return listed;
    }
    std::optional<LinkMessage> link(int index) const {
        auto known = links_.find(index);
        return known == links_.end() ? std::nullopt : std::optional(known->second);
    }
    const std::vector<AddressMessage>& addresses() const { return addresses_; }

    /// What a listing means, worked out the plain way.
    json document() const {
        json document = json::object();
        for (const auto& [index, link] : links_) {
            document["kernel"]["ns-red"][link.name] = {{"device", link.name},
                                                       {"running", link.isRunning()}};
            for (bool secondaries : {false, true}) {
                for (const auto& address : addresses_) {
                    if (address.index == index) {
                        put(document["ipv4"]["red"][link.name], address, secondaries);
                    }
                }
            }
            if (document["ipv4"]["red"][link.name].empty()) {
                document["ipv4"]["red"].erase(link.name);
            }
        }
        return document;
    }

  private:
    static void put(json& entry, const AddressMessage& address, bool secondaries) {
        std::string text = address.own().text();
        if (!secondaries && !address.isSecondary() && !entry.contains("address")) {
            entry["address"] = text;
        } else if (secondaries && entry["address"] != text) {
            entry["secondary"][text] = true;
        }
    }

    int pick(int low, int high) { return std::uniform_int_distribution(low, high)(random_); }

    std::string freeName() {
        for (;;) {
            std::string name = "e" + std::to_string(pick(0, 7));
            if (std::none_of(links_.begin(), links_.end(),
                             [&](const auto& link) { return link.second.name == name; })) {
                return name;
            }
        }
    }

    void changeLink(const LinkMessage& link) {
        links_[link.index] = link;
        announced_.emplace_back(link);
    }

    void removeLink(int index) {
        std::erase_if(addresses_, [&](const auto& known) {
            if (known.index == index) {
                announced_.emplace_back(removed(known));
            }
            return known.index == index;
        });
        announced_.emplace_back(removed(links_.at(index)));
        links_.erase(index);
    }

    static bool sameSubnet(const AddressMessage& a, const AddressMessage& b) {
        return a.index == b.index && a.remote.subnet() == b.remote.subnet();
    }

    void addAddress(int index) {
        std::string subnet = "10.0." + std::to_string(pick(0, 2)) + ".";
        auto message = added(index, subnet + std::to_string(pick(1, 4)) + "/24");
        if (pick(0, 3) == 0) {
            message.local = address("10.0.7." + std::to_string(pick(1, 2)) + "/24");
        }
        message.scope = std::array<std::uint8_t, 3>{0, 253, 254}[message.remote.bytes[2]];
        auto place = addresses_.begin();
        for (auto known = addresses_.begin(); known != addresses_.end(); ++known) {
            if (known->index != index) {
                continue;
            }
            if (!known->isSecondary() && message.scope <= known->scope) {
                place = known + 1;
            }
            if (sameSubnet(*known, message)) {
                if (known->local == message.local) {
                    return;
                }
                message.flags = IFA_F_SECONDARY;
            }
        }
        addresses_.insert(message.isSecondary() ? addresses_.end() : place, message);
        announced_.emplace_back(message);
    }

    void removeAddress(int index) {
        auto known = std::find_if(addresses_.begin(), addresses_.end(), [&](const auto& address) {
            return address.index == index && pick(0, 2) == 0;
        });
        if (known == addresses_.end()) {
            return;
        }
        AddressMessage gone = *known;
        addresses_.erase(known);
        bool promotes = pick(0, 1) == 0;
        auto orphan = [&](const auto& other) {
            return !gone.isSecondary() && sameSubnet(other, gone);
        };
        if (!promotes) {
            std::erase_if(addresses_, [&](const auto& other) {
                if (orphan(other)) {
                    announced_.emplace_back(removed(other));
                }
                return orphan(other);
            });
        }
        announced_.emplace_back(removed(gone));
        auto heir = std::find_if(addresses_.begin(), addresses_.end(), orphan);
        if (heir != addresses_.end()) {
            heir->flags = 0;
            announced_.emplace_back(*heir);
            // Behind the other primaries of the scope: anywhere a message would not tell.
            std::rotate(addresses_.begin(), heir, heir + 1);
            std::stable_sort(addresses_.begin(), addresses_.end(), [](auto& a, auto& b) {
                return std::tuple(a.isSecondary(), -a.scope)
                       < std::tuple(b.isSecondary(), -b.scope);
            });
        }
    }

    std::mt19937 random_;
    std::map<int, LinkMessage> links_;
    std::vector<AddressMessage> addresses_;
    std::vector<std::variant<LinkMessage, AddressMessage>> announced_;
};

TEST(NamespaceViewRandomTest, AlwaysMeansWhatAFreshListingMeans) {
    for (unsigned seed = 0; seed < 40; ++seed) {
        Kernel kernel(seed);
        NamespaceView view("ns-red", "red");
        json document = json::object();
        for (int step = 0; step < 200; ++step) {
            for (const auto& message : kernel.step()) {
                auto note = [&](const auto& known) {
                    if (!view.apply(known)) {
                        view.replaceOne(known.index, kernel.link(known.index), kernel.addresses());
                    }
                };
                std::visit(note, message);
                document.merge_patch(view.takePatch());
            }
            // The view that is listed anew must not be the judge of its own reading.
            NamespaceView fresh("ns-red", "red");
            fresh.replaceAll(kernel.links(), kernel.addresses());
            json listed = fresh.takePatch();
            json expected = kernel.document();
            for (const auto* section : {"/kernel/ns-red", "/ipv4/red"}) {
                json::json_pointer pointer(section);
                json meant = expected.value(pointer, json::object());
                ASSERT_EQ(document.value(pointer, json::object()), meant) << seed << " " << step;
                ASSERT_EQ(listed.value(pointer, json::object()), meant) << seed << " " << step;
            }
        }
    }
}

} // namespace
} // namespace Agent::Linux
