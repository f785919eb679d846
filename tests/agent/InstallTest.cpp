#include <csignal>
#include <fstream>
#include <gmock/gmock.h>
#include <set>
#include <sstream>
#include <string>

#include "tests/agent/LiveProgram.h"
#include "tests/agent/PrivateNamespace.h"
#include "tests/agent/Program.h"

namespace {

using namespace TestSupport;
using testing::HasSubstr;
using testing::IsEmpty;

using Lines = std::set<std::string>;

/// What the kernel has under the protocol, of both families, in the words of the ip utility.
Lines installed(int protocol = 77, const std::string& netns = {}) {
    const std::string ip = "ip " + (netns.empty() ? "" : "-n " + netns + ' ');
    const std::string number = std::to_string(protocol);
    std::istringstream out(runShell(ip + "-4 route show table all proto " + number + ';' + ip
                                    + "-6 route show table all proto " + number + " | sort -u;" + ip
                                    + "-6 neigh show proxy | grep 'proto " + number + "'")
                               .out);
    Lines lines;
    for (std::string line; std::getline(out, line);) {
        lines.insert(line.substr(0, line.find_last_not_of(' ') + 1));
    }
    return lines;
}

const std::string address4 = "local 10.1.0.9 dev e1 table local scope host";
const std::string subnet4 = "10.1.0.0/24 dev e1 scope link";
const std::string address6 = "local 2001:db8:1::9 dev e1 table local metric 1024 pref medium";
const std::string proxy6 = "2001:db8:1::9 dev e1 proxy proto 77";
const Lines all{address4, subnet4, address6, proxy6};

/// Virtual addresses of the VRF "default" on e1, as lists of members.
void configure(const std::string& ipv4, const std::string& ipv6, const std::string& more = {}) {
    std::ofstream("/run/config.json")
        << R"({"virtualIps": {"subnetRoutes": true, "ipv4": {"default": {)" << ipv4
        << R"(}}, "ipv6": {"default": {)" << ipv6 << "}}}" << more << '}';
}

void configureAll() {
    configure(R"("10.1.0.9/24": {"e1": true})", R"("2001:db8:1::9": {"e1": true})");
}

const std::string runInstall = "run --install --config /run/config.json";

/// A namespace that routes, with the link e1 to the namespace "near".
class InstallTest : public LiveTest {
  protected:
    void SetUp() override {
        LiveTest::SetUp();
        if (IsSkipped() || HasFatalFailure()) {
            return;
        }
        setKernel("ipv6/conf/default/accept_dad", "0");
        setKernel("ipv6/conf/all/forwarding", "1");
        setKernel("ipv6/conf/all/proxy_ndp", "1");
        ASSERT_TRUE(ip("netns add near\nlink add e1 up type veth peer name p1 netns near"));
        ASSERT_EQ(runShell("ip -n near -force -batch -",
                           "link set p1 up\naddr add 10.1.0.2/24 dev p1\n"
                           "addr add 2001:db8:1::2/64 nodad dev p1")
                      .status,
                  0);
    }

    static void expectInstalled(LiveProgram& agent, const Lines& lines) {
        Lines found;
        EXPECT_TRUE(agent.until([&] { return (found = installed()) == lines; }))
            << testing::PrintToString(found) << agent.err();
    }
    static bool nearReaches(const std::string& address) {
        return runShell("ip netns exec near ping -c 5 -i 0.3 -W 1 " + address).status == 0;
    }
};

TEST_F(InstallTest, NeighboursReachVirtualAddressesAndHearOfWhatPreventsIt) {
    setKernel("ipv6/conf/all/proxy_ndp", "0");
    configureAll();
    ASSERT_TRUE(ip("route add 2001:db8:1::/64 dev e1"));
    LiveProgram agent(runInstall);
    expectInstalled(agent, all);
    EXPECT_TRUE(nearReaches("10.1.0.9"));
    const std::string message = "VRF default: e1 does not answer for IPv6 virtual addresses: "
                                "proxy_ndp is off\n";
    EXPECT_TRUE(agent.untilErr(message)) << agent.err();
    EXPECT_THAT(show("routes"), HasSubstr("installed, but proxy_ndp is off on e1\n"));
    EXPECT_FALSE(nearReaches("2001:db8:1::9"));
    setKernel("ipv6/conf/e1/proxy_ndp", "1");
    EXPECT_TRUE(agent.until([] { return show("routes").find(" is off") == std::string::npos; }));
    EXPECT_TRUE(nearReaches("2001:db8:1::9"));
    EXPECT_EQ(countOf("does not answer", agent.err()), 1);
    setKernel("ipv6/conf/all/forwarding", "0");
    EXPECT_TRUE(agent.untilErr("virtual addresses: forwarding is off\n")) << agent.err();

    // As the kernel makes what an own address needs, so the agent does not.
    ASSERT_TRUE(ip("addr add 10.1.0.9/24 dev e1\naddr add 2001:db8:1::9/64 nodad dev e1"));
    expectInstalled(agent, {});
    EXPECT_THAT(show("routes"), testing::Not(HasSubstr("KERNEL")));
    ASSERT_TRUE(ip("addr del 10.1.0.9/24 dev e1\naddr del 2001:db8:1::9/64 dev e1"));
    expectInstalled(agent, all);
    EXPECT_EQ(agent.endedBy(SIGTERM), 0);
    EXPECT_THAT(installed(), IsEmpty());
}

TEST_F(InstallTest, WhatIsDeletedOrDroppedComesBack) {
    configureAll();
    ASSERT_TRUE(ip("addr add 10.5.0.1/24 dev e1"));
    LiveProgram agent(runInstall);
    expectInstalled(agent, all);
    for (const char* step :
         {"ip route flush table all proto 77; ip -6 route flush table all proto 77",
          "ip link set e1 down; ip link set e1 up",
          "ip -6 neigh del proxy 2001:db8:1::9 dev e1; ip link set e1 mtu 1400",
          "ip addr del 10.5.0.1/24 dev e1",
          "ip link add b1 type bridge; ip link set e1 master b1; ip link set e1 nomaster",
          "ip link set e1 down; ip link set e1 name f1; ip link set f1 name e1; "
          "ip link set e1 up",
          "ip link del e1; ip link add e1 up type veth peer name p1 netns near; "
          "ip -n near link set p1 up"}) {
        SCOPED_TRACE(step);
        EXPECT_EQ(runShell(step).status, 0);
        expectInstalled(agent, all);
    }
    ASSERT_TRUE(ip("link set e1 down"));
    expectInstalled(agent, {});
    EXPECT_TRUE(agent.untilShown("routes", "waiting: e1 is down"));
    ASSERT_TRUE(ip("link del e1"));
    EXPECT_TRUE(agent.untilShown("routes", "not installable: there is no link e1"));
    EXPECT_EQ(agent.endedBy(SIGTERM), 0);
    EXPECT_EQ(agent.err(), "");
}

TEST_F(InstallTest, RoutesOfOthersStayAndAreReportedOnceWhereTheyClash) {
    configureAll();
    ASSERT_TRUE(ip("route add local 10.1.0.9/32 dev e1 table local proto 98\n"
                   "route add local 2001:db8:1::9/128 dev e1 table local proto 98\n"
                   "neigh add proxy 2001:db8:1::9 dev e1 protocol 98\n"
                   "route add 10.7.0.0/24 dev e1 proto 98"));
    const Lines others = installed(98);
    ASSERT_EQ(others.size(), 4);
    LiveProgram agent(runInstall);
    const std::string clash = "on e1: another program has one there: File exists\n";
    EXPECT_TRUE(agent.untilErr(clash)) << agent.err();
    EXPECT_TRUE(agent.untilErr("on e1: another program has one there\n")) << agent.err();
    EXPECT_TRUE(agent.untilShown("routes", "failed: another program has one there: File exists"));
    EXPECT_EQ(installed(), Lines{subnet4});
    // It is tried again whenever something changes, and not said again.
    ASSERT_TRUE(ip("route add 10.8.0.0/24 dev e1\nroute del 10.8.0.0/24 dev e1\n"
                   "route del local 10.1.0.9/32 dev e1 table local proto 98"));
    expectInstalled(agent, {subnet4, address4});
    EXPECT_EQ(countOf(clash, agent.err()), 1);
    ASSERT_TRUE(ip("route del local 2001:db8:1::9/128 dev e1 table local proto 98"));
    expectInstalled(agent, {subnet4, address4, address6});
    EXPECT_EQ(agent.endedBy(SIGTERM), 0);
    EXPECT_THAT(installed(), IsEmpty());
    EXPECT_EQ(installed(98).size(), 2);
}

TEST_F(InstallTest, RefusedInstallationIsSaidOnceInTheKernelsWordsAndTriedAgain) {
    setKernel("ipv6/conf/e1/disable_ipv6", "1");
    configure(R"("10.1.0.9/24": {"e1": true})",
              R"("2001:db8:1::9": {"e1": true}, "2001:db8:1::8": {"e1": true})");
    LiveProgram agent(runInstall);
    const std::string refusal = "on e1: IPv6 is disabled on nexthop device (Permission denied)\n";
    EXPECT_TRUE(agent.untilErr(refusal)) << agent.err();
    expectInstalled(agent, {address4, subnet4, proxy6, "2001:db8:1::8 dev e1 proxy proto 77"});
    EXPECT_THAT(show("routes"), HasSubstr("failed: IPv6 is disabled on nexthop device"));
    setKernel("ipv6/conf/e1/disable_ipv6", "0");
    EXPECT_TRUE(agent.until([] { return installed().contains(address6); }));
    EXPECT_EQ(countOf(refusal, agent.err()), 1);
    EXPECT_EQ(agent.endedBy(SIGTERM), 0);
    EXPECT_THAT(installed(), IsEmpty());
}

TEST_F(InstallTest, WhatAKilledRunLeftGoesOnceTheVrfIsReadyAndNotBefore) {
    configureAll();
    {
        LiveProgram killed(runInstall);
        expectInstalled(killed, all);
        EXPECT_EQ(killed.endedBy(SIGKILL), -1);
    }
    ASSERT_EQ(installed(), all);
    // There, but not to be followed: after a graceful restart nothing is ready until it has been.
    ASSERT_EQ(
        runShell("touch /run/netns/nsred; mount --bind /proc/self/ns/uts /run/netns/nsred").status,
        0);
    configure(R"("10.1.0.8/32": {"e1": true})", "", R"(, "gracefulRestart": true)");
    LiveProgram agent(runInstall + " --vrf red=nsred");
    Lines lines = all;
    const std::string fresh = "local 10.1.0.8 dev e1 table local scope host";
    lines.insert(fresh);
    expectInstalled(agent, lines);
    EXPECT_THAT(show("vrfs --json"), HasSubstr(R"("ready":{"ipv4":false,"ipv6":false})"));
    ASSERT_EQ(runShell("umount /run/netns/nsred").status, 0);
    expectInstalled(agent, {fresh});
    EXPECT_EQ(agent.endedBy(SIGTERM), 0);
}

TEST_F(InstallTest, EndRemovesAllThatIsUnderTheProtocolUnlessItIsToBeKept) {
    configureAll();
    LiveProgram keeps(runInstall + " --keep-installed --install-protocol 200 --no-socket");
    EXPECT_TRUE(keeps.until([] { return installed(200).size() == 4; })) << keeps.err();
    EXPECT_EQ(keeps.endedBy(SIGTERM), 0);
    const Lines kept = installed(200);
    EXPECT_EQ(kept.size(), 4);
    ASSERT_TRUE(ip("netns add nsred"));
    // Of kinds that the agent never makes, and in tables that are no VRF's.
    for (const char* netns : {"", "-n nsred "}) {
        ASSERT_EQ(runShell(std::string("ip ") + netns + "-batch -",
                           "link set lo up\nroute add blackhole 10.9.0.0/24 proto 77\n"
                           "route add unreachable 2001:db8:9::/64 proto 77 metric 7 table 300\n"
                           "route add 10.9.1.0/24 proto 77 table 301 metric 5 nexthop dev lo "
                           "nexthop dev lo")
                      .status,
                  0);
    }
    LiveProgram agent(runInstall + " --vrf red=nsred");
    EXPECT_TRUE(agent.learned());
    EXPECT_TRUE(agent.untilShown("vrfs", "\nred ")) << agent.err();
    EXPECT_EQ(agent.endedBy(SIGTERM), 0);
    EXPECT_THAT(installed(), IsEmpty());
    EXPECT_THAT(installed(77, "nsred"), IsEmpty());
    EXPECT_EQ(installed(200), kept);
    EXPECT_THAT(agent.err(), HasSubstr("another program has one there")); // those that were kept
}

TEST_F(InstallTest, EverythingIsThereAfterABurstThatOverranTheSocket) {
    std::string addresses;
    for (int i = 0; i < 500; ++i) {
        addresses += (i == 0 ? "\"10.2." : ", \"10.2.") + std::to_string(i / 250) + '.'
                     + std::to_string(i % 250 + 1) + R"(/32": {"e1": true})";
    }
    configure(addresses, "");
    LiveProgram agent(runInstall);
    EXPECT_TRUE(agent.until([] { return installed().size() == 500; })) << agent.err();
    agent.signal(SIGSTOP);
    std::string burst;
    for (int i = 0; i < 8000; ++i) {
        burst += "link set lo alias a" + std::to_string(i % 10) + '\n';
    }
    ASSERT_TRUE(ip(burst));
    ASSERT_EQ(runShell("ip -4 route flush table local proto 77").status, 0);
    EXPECT_THAT(installed(), IsEmpty());
    agent.signal(SIGCONT);
    EXPECT_TRUE(agent.until([] { return installed().size() == 500; })) << installed().size();
    EXPECT_EQ(agent.endedBy(SIGTERM), 0);
    EXPECT_THAT(installed(), IsEmpty());
}

TEST_F(InstallTest, LeaksBetweenNamespacesAreNotInstallableAndOptionsAskForInstall) {
    ASSERT_TRUE(ip("addr add 10.1.0.1/24 dev e1"));
    std::ofstream("/run/config.json")
        << R"({"leaks": {"ipv4": {"default": {"10.1.0.0/24": {"red": true}}}}})";
    LiveProgram agent(runInstall + " --vrf red=near");
    EXPECT_TRUE(agent.untilShown(
        "routes", "default     not installable: its VRFs are in different network namespaces\n"))
        << show("routes");
    EXPECT_EQ(agent.endedBy(SIGTERM), 0);
    for (const char* options : {"--keep-installed", "--install-protocol 100", "--once --install",
                                "--install --install-protocol 4"}) {
        EXPECT_EQ(runProgram(std::string("run ") + options).status, 2) << options;
    }
}

} // namespace
