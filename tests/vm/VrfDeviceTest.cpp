#include <csignal>
#include <gmock/gmock.h>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "tests/vm/VmTest.h"

namespace {

using namespace TestSupport;
using nlohmann::json;
using testing::HasSubstr;
using VrfDeviceTest = VmTest;

/// What `show vrfs` says of the VRFs that are not up, by device or else by name.
std::map<std::string, std::string> vrfsNotUp() {
    std::map<std::string, std::string> reasons;
    std::istringstream rows(show("vrfs --json"));
    for (std::string line; std::getline(rows, line);) {
        const json row = json::parse(line);
        if (row.contains("notUp") && row["notUp"].is_string()) {
            reasons[row["device"].is_string() ? row["device"] : row["vrf"]] = row["notUp"];
        }
    }
    return reasons;
}

bool hasRoute(const std::string& vrf, const std::string& prefix) {
    return agentRoutes(show("--json --vrf " + vrf), vrf).contains(prefix);
}

TEST_F(VrfDeviceTest, AgentFollowsLinksAndVrfDevicesAsTheKernelDoes) {
    withoutDuplicateDetection();
    LiveProgram agent("run");
    ASSERT_TRUE(agent.learned()) << agent.err();
    const std::vector<std::string> steps{
        "link add e2 up type dummy",
        "link add red up type vrf table 100\nlink add blue up type vrf table 200",
        "link set e1 master red\naddr add 10.1.0.1/24 dev e1\naddr add fd00:1::1/64 dev e1",
        "addr add 10.2.0.1/24 dev e2\naddr add fd00:2::1/64 dev e2\nlink set e2 master red",
        // The same address in two VRFs, then moved from one to the other.
        "addr add 10.2.0.1/24 dev e1\naddr add 10.1.0.9/24 dev e2", "link set e2 master blue",
        "link set e1 nomaster", "link set e1 master blue", "link set e1 master red",
        "addr replace fd00:1::1/64 dev e1\naddr add 10.1.0.2/24 dev e1\naddr del 10.1.0.1/24 dev "
        "e1",
        // The ports of a bridge or bond stay where they are.
        "link add br0 up type bridge\nlink add p0 up type dummy\nlink set p0 master br0\n"
        "addr add 10.3.0.1/24 dev br0\naddr add 10.4.0.1/24 dev p0\nlink set br0 master red",
        "link add name bo0 type bond\nlink add p1 type dummy\nlink set p1 master bo0\n"
        "link set bo0 up master blue\naddr add 10.5.0.1/24 dev bo0\naddr add 10.6.0.1/24 dev p1",
        "link set p0 master blue", "link set br0 nomaster",
        "link add link e1 name e1.5 up type vlan id 5\naddr add 10.9.0.1/24 dev e1.5",
        "link set e1.5 master red", "link set e1 nomaster",
        // Addresses of the devices themselves.
        "addr add 10.7.7.7/32 dev red\naddr add 10.8.0.1/24 dev red\naddr add fd00:7::7/128 dev "
        "red",
        "link set red down", "link set e2 master red", "link set e1 down\nlink set e1 up",
        "link set red up\naddr replace fd00:7::7/128 dev red",
        "link set red down\nlink set red name crimson\nlink set crimson up",
        "link set e1 master crimson", "link del crimson",
        "link add crimson up type vrf table 101\nlink set e1 master crimson",
        // Made again in one go, with another table, then under the name of another link.
        "link del blue\nlink add blue up type vrf table 201\nlink set e2 master blue",
        "link del e2\nlink del blue\nlink add e2 up type vrf table 200\nlink set bo0 master e2",
        "link del crimson\nlink del e2\nlink del bo0\nlink del br0\nlink del e1\nlink del p0"};
    // One link keeps its addresses while it is down or moved, the others do not.
    setKernel("ipv6/conf/default/keep_addr_on_down", "1");
    ASSERT_TRUE(ipIn("", "link add e1 up type dummy"));
    setKernel("ipv6/conf/default/keep_addr_on_down", "0");
    for (const std::string& step : steps) {
        SCOPED_TRACE(step);
        ASSERT_TRUE(ipIn("", step));
        expectKernelVrfs(agent, {{"default", ""}});
    }
    EXPECT_EQ(agent.err(), "");
    EXPECT_EQ(agent.endedBy(SIGTERM), 0);
}

TEST_F(VrfDeviceTest, OneOfTwoWithOneNameOrIdWaitsUntilItIsFreeAndNothingElseSuffers) {
    withoutDuplicateDetection();
    addNamespaces({"nsred", "ns2"});
    ASSERT_TRUE(ipIn("", "link add red up type vrf table 51\n"
                         "link add green up type vrf table 100"));
    ASSERT_TRUE(ipIn("ns2", "link add lime up type vrf table 500"));
    LiveProgram agent("run --vrf red=nsred --vrf other=ns2 --vrf none=nowhere");
    ASSERT_TRUE(agent.untilShown("routes", "\nVRF lime"));
    // It comes when the other has the id for sure.
    ASSERT_TRUE(ipIn("ns2", "link del lime\nlink add lime up type vrf table 100"));
    int number = 0;
    const auto fill = [&](const std::string& netns, const std::string& vrf) {
        const std::string n = std::to_string(++number);
        return ipIn(netns, "link add e" + n + " up type dummy\nlink set e" + n + " master " + vrf
                               + "\naddr add 10." + n + ".0.1/24 dev e" + n);
    };
    ASSERT_TRUE(fill("", "red") && fill("", "green") && fill("ns2", "lime"));
    ASSERT_TRUE(ipIn("nsred", "link add e9 up type dummy\naddr add 10.9.0.1/24 dev e9"));
    const std::map<std::string, std::string> notUp{
        {"red", "its name is that of the VRF of namespace nsred"},
        {"lime", "id 100 is taken by VRF green"},
        {"none", "no such network namespace"}};
    EXPECT_TRUE(agent.until([&] {
        return vrfsNotUp() == notUp && hasRoute("red", "10.9.0.0/24")
               && hasRoute("green", "10.2.0.0/24");
    })) << json(vrfsNotUp())
        << show("routes");
    EXPECT_THAT(show("vrfs"), HasSubstr("id 100 is taken by VRF green"));
    EXPECT_FALSE(hasRoute("default", "10.1.0.0/24") || hasRoute("red", "10.1.0.0/24"));
    for (const auto& [device, reason] : notUp) {
        if (device != "none") {
            EXPECT_TRUE(agent.untilErr(": " + reason)) << agent.err();
            EXPECT_EQ(countOf(": " + reason, agent.err()), 1U) << agent.err();
        }
    }

    ASSERT_TRUE(ipIn("", "link del green"));
    EXPECT_TRUE(agent.until([] { return hasRoute("lime", "10.3.0.0/24"); })) << show("vrfs");
    EXPECT_TRUE(agent.until([] { return hasRoute("default", "10.2.0.0/24"); }));

    const auto once = runProgram("run --once --json --no-vrf-devices --vrf red=nsred");
    const RoutesByPrefix all = agentRoutes(once.out, "default");
    EXPECT_TRUE(all.contains("10.1.0.0/24") && all.contains("10.2.0.0/24")) << once.out;
    EXPECT_EQ(json::parse(once.out)["vrfs"].size(), 2U);
    EXPECT_EQ(agent.endedBy(SIGTERM), 0);
}

TEST_F(VrfDeviceTest, NamespaceThatComesLaterComesWithItsVrfDevices) {
    LiveProgram agent("run --vrf one=ns1");
    ASSERT_TRUE(agent.learned());
    addNamespaces({"hidden"});
    withoutDuplicateDetection("hidden");
    ASSERT_TRUE(ipIn("hidden", "link add red up type vrf table 100\nlink add e1 up type dummy\n"
                               "link set e1 master red\naddr add 10.1.0.1/24 dev e1\n"
                               "addr add fd00:1::1/64 dev e1"));
    for (int i = 0; i < 2; ++i) {
        ASSERT_EQ(
            runShell("touch /run/netns/ns1; mount --bind /run/netns/hidden /run/netns/ns1").status,
            0);
        expectKernelVrfs(agent, {{"default", ""}, {"one", "ns1"}});
        EXPECT_TRUE(hasRoute("red", "fd00:1::/64"));
        ASSERT_EQ(runShell("umount /run/netns/ns1").status, 0);
        expectKernelVrfs(agent, {{"default", ""}});
    }
    EXPECT_EQ(agent.err(), "");
}

} // namespace
