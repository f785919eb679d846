#include <csignal>
#include <cstdlib>
#include <fstream>
#include <nlohmann/json.hpp>
#include <set>
#include <vector>

#include "tests/vm/RandomNetwork.h"
#include "tests/vm/VmTest.h"

namespace {

using namespace TestSupport;
using nlohmann::json;

constexpr int commands = 300;
const std::string follow = "--vrf one=ns1 --vrf two=ns2 ";

/// Other commands than the usual ones are run by setting DIRECTNET_FIRST_SEED.
std::uint32_t firstSeed() {
    const char* text = std::getenv("DIRECTNET_FIRST_SEED");
    return text == nullptr ? 0 : static_cast<std::uint32_t>(std::strtoul(text, nullptr, 10));
}

class ChaosTest : public VmTest, public testing::WithParamInterface<std::uint32_t> {
  protected:
    void SetUp() override {
        VmTest::SetUp();
        if (!IsSkipped()) {
            addNamespaces({"ns1", "ns2"});
            ASSERT_EQ(runShell("echo 1 >/proc/sys/net/ipv6/conf/default/keep_addr_on_down").status,
                      0);
        }
    }

    static FollowedNamespaces present() {
        FollowedNamespaces namespaces{{"default", ""}, {"one", "ns1"}};
        if (runShell("test -e /run/netns/ns2").status == 0) {
            namespaces["two"] = "ns2";
        }
        return namespaces;
    }

    const std::uint32_t seed = firstSeed() + GetParam();
    RandomNetwork network{seed};
};

/// By VRF the prefixes of the routes that are installed.
using InstalledPrefixes = std::map<std::string, std::set<std::string>>;

InstalledPrefixes installedByKernel(const FollowedNamespaces& namespaces) {
    InstalledPrefixes installed;
    for (const auto& [own, netns] : namespaces) {
        for (const auto& [vrf, routes] : foreignRoutes(77, own, netns)) {
            for (const auto& route : routes) {
                installed[vrf].insert(route.first);
            }
        }
    }
    return installed;
}

/// What the agent says of it in its state, out of which the words are taken.
InstalledPrefixes takeInstalled(json& state) {
    InstalledPrefixes installed;
    for (auto& [name, vrf] : state["vrfs"].items()) {
        for (const char* family : {"ipv4", "ipv6"}) {
            for (auto& [prefix, route] : vrf[family].items()) {
                if (route.value("kernel", "").starts_with("installed")) {
                    installed[name].insert(prefix);
                }
                route.erase("kernel");
            }
        }
    }
    return installed;
}

/// Routes and proxy neighbours of the protocol, as the `ip` utility lists them.
std::string listing(const FollowedNamespaces& namespaces) {
    std::string command = "for n in '' ";
    for (const auto& [vrf, netns] : namespaces) {
        command += netns.empty() ? "" : "'-n " + netns + "' ";
    }
    return runShell(command
                    + "; do echo \"$n\"; (ip $n route show table all proto 77; "
                      "ip $n -6 neigh show proxy) | sort; done")
        .out;
}

TEST_P(ChaosTest, StateIsThatOfTheKernelAndOfAFreshStart) {
    LiveProgram agent("run --no-tables " + follow);
    ASSERT_TRUE(agent.learned()) << agent.err();
    for (int i = 0; i < commands; ++i) {
        network.step();
    }
    network.flush();
    const FollowedNamespaces namespaces = present();
    expectKernelVrfs(agent, namespaces);
    json own;
    const json fresh = json::parse(runProgram("run --once --json " + follow).out);
    EXPECT_TRUE(agent.until([&] {
        own = json::parse(show("--json"), nullptr, false);
        if (own.is_object()) {
            own["time"] = fresh["time"];
        }
        return own == fresh;
    })) << "running: "
        << own << "\nfresh: " << fresh;
    EXPECT_EQ(agent.err(), "");
    if (HasFailure()) {
        FAIL() << "seed " << seed << '\n' << network.log();
    }
}

/// Every VRF has virtual addresses on all links, some of which are own addresses at times, and
/// leaks to the next.
void configure() {
    json config;
    const std::vector<std::string> vrfs{"default", "red", "blue", "one", "green", "grey", "two"};
    for (std::size_t i = 0; i < vrfs.size(); ++i) {
        const std::string& vrf = vrfs[i];
        const std::string& next = vrfs[(i + 1) % vrfs.size()];
        for (const std::string link : {"e0", "e1", "e2", "e3", "e4"}) {
            config["virtualIps"]["ipv4"][vrf]["10.0.0." + link.substr(1) + "/24"][link] = true;
            config["virtualIps"]["ipv6"][vrf]["fd00:1::" + link.substr(1)][link] = true;
        }
        for (const char* prefix : {"10.0.0.0/24", "10.1.0.0/24", "10.2.0.0/24"}) {
            config["leaks"]["ipv4"][vrf][prefix] = {{next, true}, {"default", vrf != "default"}};
        }
        for (const char* prefix : {"fd00::/64", "fd00:1::/64", "fd00:2::/64"}) {
            config["leaks"]["ipv6"][vrf][prefix][next] = true;
        }
    }
    config["virtualIps"]["subnetRoutes"] = true;
    std::ofstream("/run/config.json") << config;
}

TEST_P(ChaosTest, InstalledRoutesAreThoseOfAFreshStartAndGoWithTheAgent) {
    configure();
    const std::string arguments = follow + "--config /run/config.json --no-tables ";
    network.alsoDo("route flush table all proto 77");
    LiveProgram agent("run --install " + arguments);
    ASSERT_TRUE(agent.learned()) << agent.err();
    for (int i = 0; i < commands; ++i) {
        network.step();
    }
    network.flush();
    const FollowedNamespaces namespaces = present();
    const json fresh = json::parse(runProgram("run --once --json " + arguments).out);
    InstalledPrefixes said;
    InstalledPrefixes kernel;
    json own;
    const auto settled = [&] {
        own = json::parse(show("--json"), nullptr, false);
        if (!own.is_object()) {
            return false;
        }
        own["time"] = fresh["time"];
        own["vias"] = fresh["vias"]; // of virtual addresses there may be some more, of what was
        own["viaSets"] = fresh["viaSets"];
        said = takeInstalled(own);
        std::erase_if(kernel = installedByKernel(namespaces),
                      [](const auto& vrf) { return vrf.second.empty(); });
        return said == kernel && own == fresh;
    };
    EXPECT_TRUE(agent.until(settled)) << "said: " << json(said) << "\nkernel: " << json(kernel)
                                      << "\nrunning: " << own << "\nfresh: " << fresh;
    const std::string before = listing(namespaces);
    EXPECT_FALSE(kernel.empty());
    EXPECT_EQ(agent.endedBy(SIGTERM), 0);
    EXPECT_EQ(countOf("\n", listing(namespaces)), namespaces.size()) << listing(namespaces);

    LiveProgram again("run --install " + arguments);
    EXPECT_TRUE(again.until([&] { return listing(namespaces) == before; }))
        << "before: " << before << "\nafter: " << listing(namespaces) << again.err();
    if (HasFailure()) {
        FAIL() << "seed " << seed << '\n' << network.log();
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, ChaosTest, testing::Range(0U, 2U));

} // namespace
