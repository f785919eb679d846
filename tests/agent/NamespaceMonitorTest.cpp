#include "agent/linux/NamespaceMonitor.h"
#include "agent/linux/NamespaceWatch.h"
#include "platform/orb/Error.h"
#include "tests/agent/PrivateNamespace.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <poll.h>
#include <random>

namespace Agent::Linux {
namespace {

using json = nlohmann::json;

/// Waits for something to do, at most until `deadline`, and does it.
template <class Source>
void serve(Source& source, double deadline) {
    double until = std::min(deadline, source.retryAt());
    auto wait = std::ceil(std::max(0.0, until - steadySeconds()) * 1000);
    pollfd poll{source.fd(), POLLIN, 0};
    if (::poll(&poll, 1, static_cast<int>(wait)) > 0 || source.retryAt() <= steadySeconds()) {
        source.onReadable();
    }
}

/// The document that a monitor's patches make up.
class Follower {
  public:
    explicit Follower(NamespaceMonitor::Options options = {}) : monitor_(std::move(options)) {
        monitor_.start();
    }

    void serveOnce(double deadline) {
        serve(monitor_, deadline);
        document.merge_patch(monitor_.takePatch());
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

TEST(NamespaceMonitorTest, FollowsWhateverTheKernelDoesWithAddresses) {
    static const std::vector<std::string> steps{
        "link add e1 type ifb\nlink add e2 type ifb\nlink set e1 up",
        "addr add 10.0.0.1/24 dev e1\naddr add 10.0.0.2/24 dev e1\naddr add 10.0.0.3/24 dev e1",
        "addr add 10.1.0.1/24 dev e1\naddr add 10.2.0.1/24 scope host dev e1",
        "addr add 10.1.0.2/24 dev e1\naddr add 10.2.0.2/24 scope host dev e1",
        "addr del 10.0.0.1/24 dev e1",
        "addr del 10.2.0.1/24 dev e1",
        "addr del 10.1.0.1/24 dev e1",
        "addr replace 10.1.0.2/24 metric 9 dev e1",
        "addr add 10.3.0.1 peer 10.9.9.9/24 dev e2\naddr add 10.3.0.1/32 dev e2",
        "addr add fd00:1::5/64 nodad dev e1\naddr add fd00:2::5 peer fd00:2::6 nodad dev e1",
        "link set e1 down",
        "link set e1 up",
        "addr add fd00:3::5/64 nodad dev e1\naddr del fd00:3::5/64 dev e1",
        "addr add fd00:3::5/72 nodad dev e1",
        "link set e1 name tmp\nlink set e2 name e1\nlink set tmp name e2",
        "link add v1 type veth peer name w1\nlink set v1 up\nlink set w1 up",
        "addr add fd00:4::5/64 dev v1\naddr add fd00:4::6/64 optimistic dev v1",
        "link set w1 down",
        "link set w1 up",
        "link add br0 type bridge\nlink set br0 up\nlink set v1 master br0",
        "link set v1 nomaster\nlink del br0",
        "link add x1 index 77 type ifb\naddr add 10.7.0.1/24 dev x1",
        "link del x1\nlink add x2 index 77 type ifb\naddr add 10.8.0.1/24 dev x2",
        "netns add other\nlink set v1 netns other",
        "addr flush dev e2",
        "netns del other\nlink del e1"};
    inPrivateNamespace([] {
        Follower follower;
        for (const char* keep : {"0", "1"}) {
            setKernel("ipv6/conf/default/keep_addr_on_down", keep);
            setKernel("ipv4/conf/default/promote_secondaries", keep);
            for (const std::string& step : steps) {
                ip(step);
                expectFresh(follower, 5, step + " (keep " + keep + ")");
            }
            ip("link del e2\nlink del x2\nlink del w1");
        }
    });
}

TEST(NamespaceMonitorTest, SilentIpv6WithdrawalOnLinkDownIsSeen) {
    inPrivateNamespace([] {
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
    });
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

TEST(NamespaceMonitorTest, RandomChangesEndAsAFreshStartWould) {
    inPrivateNamespace([] {
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
    });
}

/// Serves the watch until it tells `count` changes; as text, "+name" or "-name".
std::string changesOf(NamespaceWatch& watch, std::size_t count) {
    std::string text;
    for (double deadline = steadySeconds() + 5; steadySeconds() < deadline;) {
        for (const auto& change : watch.takeChanges()) {
            text += (change.appeared ? "+" : "-") + change.name + " ";
            --count;
        }
        if (count == 0) {
            break;
        }
        serve(watch, deadline);
    }
    return text;
}

TEST(NamespaceWatchTest, NamespacesComeAndGoWithTheirFolder) {
    inPrivateNamespace([] {
        NamespaceWatch watch;
        ASSERT_EQ(watch.retryAt(), std::numeric_limits<double>::infinity());
        ip("netns add one");
        EXPECT_EQ(changesOf(watch, 1), "+one ");
        // The kernel gives the new namespace the identity of the old one.
        ip("netns del one\nnetns add one");
        EXPECT_EQ(changesOf(watch, 2), "-one +one ");
        ip("netns add two\nnetns del one");
        EXPECT_EQ(changesOf(watch, 2), "+two -one ");

        NamespaceWatch later;
        EXPECT_EQ(changesOf(later, 1), "+two ");
    });
}

TEST(NamespaceWatchTest, FileWithoutNamespaceIsLookedAtAgainAndNeverOpened) {
    inPrivateNamespace([] {
        double now = 100;
        ip("netns add real");
        NamespaceWatch watch([&] { return now; });
        std::ignore = watch.takeChanges();
        std::fclose(std::fopen("/run/netns/file", "w"));
        watch.onReadable();
        EXPECT_GT(watch.retryAt(), now);
        EXPECT_LT(watch.retryAt(), now + 0.1);
        for (int i = 0; i < 20; ++i) {
            now = watch.retryAt();
            watch.onReadable();
        }
        EXPECT_LE(watch.retryAt(), now + 1);
        EXPECT_TRUE(watch.takeChanges().empty());
        NamespaceMonitor::Options options;
        for (const char* name : {"file", "none", "../netns/real", ""}) {
            options.netlink.netns = name;
            EXPECT_THROW(NamespaceMonitor{options}, Orb::Error) << name;
        }
        std::remove("/run/netns/file");
        watch.onReadable();
        EXPECT_EQ(watch.retryAt(), std::numeric_limits<double>::infinity());
    });
}

} // namespace
} // namespace Agent::Linux
