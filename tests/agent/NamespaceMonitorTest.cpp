#include "agent/linux/NamespaceMonitor.h"
#include "agent/linux/NetlinkSocket.h"
#include "tests/agent/PatchJson.h"
#include "tests/agent/PrivateNamespace.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <fstream>
#include <gtest/gtest.h>
#include <linux/rtnetlink.h>
#include <poll.h>
#include <random>
#include <span>
#include <sstream>
#include <sys/socket.h>

namespace Agent::Linux {
namespace {

using namespace TestSupport;
using NamespaceMonitorTest = LiveTest;
using json = nlohmann::json;

/// The document that a monitor's patches make up.
class Follower {
  public:
    explicit Follower(NamespaceMonitor::Options options = {}) : monitor_(std::move(options)) {
        monitor_.start();
    }

    /// Waits for something to do, at most until `deadline`, and does it.
    void serveOnce(double deadline) {
        const double until = std::min(deadline, monitor_.retryAt());
        const auto wait = std::ceil(std::max(0.0, until - steadySeconds()) * 1000);
        pollfd poll{monitor_.fd(), POLLIN, 0};
        if (::poll(&poll, 1, static_cast<int>(wait)) > 0 || monitor_.retryAt() <= steadySeconds()) {
            monitor_.onReadable();
        }
        document.merge_patch(TestSupport::PatchJson::of(monitor_.takePatch()));
    }

    /// Serves until everything that has been announced so far is known.
    void settle() {
        double deadline = steadySeconds() + 20;
        pollfd poll{monitor_.fd(), POLLIN, 0};
        while (!monitor_.isSettled() || ::poll(&poll, 1, 0) > 0) {
            ASSERT_LT(steadySeconds(), deadline) << "does not settle";
            serveOnce(deadline);
        }
    }

    /// Whether there is nothing to do until something happens.
    bool isIdle() {
        pollfd poll{monitor_.fd(), POLLIN, 0};
        return ::poll(&poll, 1, 0) == 0;
    }

    json document = json::object();

  private:
    NamespaceMonitor monitor_;
};

/// Sections and namespaces that have become empty do not count.
json withoutEmpty(json document) {
    auto prune = [](json& object) {
        for (auto at = object.begin(); at != object.end();) {
            at = at->empty() ? object.erase(at) : std::next(at);
        }
    };
    for (json& section : document) {
        prune(section);
    }
    prune(document);
    return document;
}

json freshDocument() {
    Follower fresh;
    fresh.settle();
    return withoutEmpty(fresh.document);
}

/// Expects `follower` to know what a fresh start would find. The kernel goes on by itself for a
/// while (duplicate address detection), so a difference counts only if it stays.
void expectFresh(Follower& follower, double patience, const std::string& after) {
    double deadline = steadySeconds() + patience;
    for (;;) {
        follower.settle();
        json fresh = freshDocument();
        json difference = json::diff(withoutEmpty(follower.document), fresh);
        if (difference.empty()) {
            return;
        }
        if (steadySeconds() >= deadline) {
            FAIL() << "after " << after << ": " << difference.dump().substr(0, 1000);
        }
        follower.serveOnce(steadySeconds() + 0.02);
    }
}

TEST_F(NamespaceMonitorTest, SilentIpv6WithdrawalOnLinkDownIsSeen) {
    setKernel("ipv6/conf/default/keep_addr_on_down", "1");
    ip("link add v1 type veth peer name w1\nlink set v1 up\nlink set w1 up\n"
       "addr add fd00::5/64 dev v1");
    setKernel("ipv6/conf/v1/accept_dad", "0");
    ip("addr add fd00::6/64 dev v1");
    Follower follower;
    for (double deadline = steadySeconds() + 5;
         follower.document["ipv6"]["default"]["v1"]["fd00::6/64"] != true;) {
        ASSERT_LT(steadySeconds(), deadline);
        follower.serveOnce(deadline);
    }
    ip("link set v1 down");
    follower.settle();
    EXPECT_FALSE(follower.document["ipv6"]["default"].contains("v1"));
}

/// A random line of the `ip` utility on few links and addresses, so that lines meet.
std::string randomLine(std::mt19937& random) {
    static const std::vector<std::string> lines{"link add e# index 5# type ifb",
                                                "link del e#",
                                                "link set e# name e#",
                                                "link set e# up",
                                                "link set e# down",
                                                "addr add fd00::#/64 nodad dev e#",
                                                "addr add fd00::#/6# nodad dev e#",
                                                "addr del fd00::#/64 dev e#",
                                                "addr del fd00::#/6# dev e#",
                                                "addr del 10.0.#.#/24 dev e#",
                                                "addr del 10.0.0.#/24 dev e#",
                                                "addr del 10.0.1.#/24 dev e#",
                                                "addr add 10.0.0.#/24 dev e#",
                                                "addr add 10.0.1.#/24 dev e#",
                                                "addr add 10.0.#.#/24 dev e#",
                                                "addr add 10.0.0.#/24 scope link dev e#",
                                                "addr add 10.0.#.#/24 scope link dev e#"};
    std::string line = lines[random() % lines.size()];
    for (char& c : line) {
        c = c == '#' ? static_cast<char>('0' + random() % 4) : c;
    }
    return line + '\n';
}

TEST_F(NamespaceMonitorTest, RandomChangesEndAsAFreshStartWould) {
    // The second reads while changes happen, the third overruns now and then.
    NamespaceMonitor::Options small;
    small.netlink.receiveBuffer = 1;
    Follower late;
    Follower prompt;
    Follower overrunning(small);
    for (unsigned seed = 0; seed < 25; ++seed) {
        std::mt19937 random(seed);
        setKernel("ipv4/conf/default/promote_secondaries", seed % 2 == 0 ? "1" : "0");
        setKernel("ipv6/conf/default/keep_addr_on_down", seed % 3 == 0 ? "1" : "0");
        std::string lines;
        for (int i = 0; i < 60; ++i) {
            lines += randomLine(random);
            if (i % 20 == 0) {
                ip(lines);
                lines.clear();
                prompt.serveOnce(steadySeconds());
                overrunning.serveOnce(steadySeconds());
            }
        }
        ip(lines);
        std::string seeds = "seed " + std::to_string(seed);
        expectFresh(late, 3, seeds + " read late");
        expectFresh(prompt, 3, seeds + " read promptly");
        expectFresh(overrunning, 3, seeds + " with a small buffer");
    }
}

/// Sends `bytes` to every route netlink socket of the namespace.
void sendToAllSockets(std::span<const std::byte> bytes) {
    const NetlinkSocket sender;
    std::ifstream sockets("/proc/thread-self/net/netlink");
    std::string line;
    std::getline(sockets, line); // titles
    int reached = 0;
    while (std::getline(sockets, line)) {
        std::string address;
        int protocol = 0;
        sockaddr_nl to{};
        std::istringstream(line) >> address >> protocol >> to.nl_pid;
        to.nl_family = AF_NETLINK;
        if (protocol == NETLINK_ROUTE && to.nl_pid != 0) {
            reached += ::sendto(sender.fd(), bytes.data(), bytes.size(), 0,
                                reinterpret_cast<const sockaddr*>(&to), sizeof to)
                               > 0
                           ? 1
                           : 0;
        }
    }
    EXPECT_GE(reached, 2);
}

TEST_F(NamespaceMonitorTest, MessagesOfOthersThanTheKernelAreIgnored) {
    ip("link add e1 type ifb\nlink set e1 up");
    struct {
        nlmsghdr header{};
        ifinfomsg info{};
        nlattr attribute{sizeof(nlattr) + 8, IFLA_IFNAME};
        std::array<char, 8> name{"forged"};
    } forged;
    forged.header.nlmsg_len = sizeof forged;
    forged.header.nlmsg_type = RTM_NEWLINK;
    forged.header.nlmsg_seq = 1; // of the first listing
    forged.info.ifi_index = 99;

    Follower follower;
    sendToAllSockets(std::as_bytes(std::span(&forged, 1)));
    for (const double deadline = steadySeconds() + 5; follower.document.empty();) {
        ASSERT_LT(steadySeconds(), deadline);
        follower.serveOnce(deadline);
    }
    EXPECT_FALSE(follower.document["kernel"]["default"].contains("forged")) << "as an answer";
    follower.settle();
    sendToAllSockets(std::as_bytes(std::span(&forged, 1)));
    ip("addr add 10.0.0.1/24 dev e1");
    expectFresh(follower, 3, "a forged announcement");
    // The kernel may still have something to say, of duplicate address detection.
    for (const double deadline = steadySeconds() + 5; !follower.isIdle();) {
        ASSERT_LT(steadySeconds(), deadline) << "what nobody waits for keeps it busy";
        follower.serveOnce(steadySeconds() + 0.02);
    }
}

TEST_F(NamespaceMonitorTest, ChangesDuringAListingAreNeitherLostNorOverwritten) {
    constexpr int addresses = 8000; // of IPv6, which is listed last
    std::string lines = "link add e1 type ifb\nlink set e1 up\naddr add 10.0.0.1/24 dev e1\n";
    for (int i = 0; i < addresses; ++i) {
        lines += "addr add fd00::" + std::to_string(i) + "/64 nodad dev e1\n";
    }
    ASSERT_TRUE(ip(lines));
    Follower follower;
    follower.serveOnce(steadySeconds() + 1);
    ASSERT_TRUE(follower.document.empty()) << "all is listed at once";
    ip("addr add 10.0.1.1/24 dev e1\naddr del 10.0.0.1/24 dev e1\nlink add e2 type ifb");
    expectFresh(follower, 3, "changes between the parts of a listing");
    EXPECT_EQ(follower.document["ipv4"]["default"]["e1"]["address"], "10.0.1.1/24");
}

} // namespace
} // namespace Agent::Linux
