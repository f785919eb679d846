#include <csignal>
#include <fstream>
#include <gmock/gmock.h>
#include <set>
#include <sstream>

#include "tests/vm/VmTest.h"

namespace {

using namespace TestSupport;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using Lines = std::set<std::string>;

/// What the kernel has of a protocol in the own namespace, in the words of the `ip` utility.
Lines installed(const std::string& protocol = "77") {
    std::istringstream out(runShell("ip route show table all proto " + protocol
                                    + "; ip -6 neigh show proxy | grep 'proto " + protocol + "'")
                               .out);
    Lines lines;
    for (std::string line; std::getline(out, line);) {
        lines.insert(line.substr(0, line.find_last_not_of(' ') + 1));
    }
    return lines;
}

const Lines leaked{"local 10.1.0.1 dev e1 table 200 scope host",
                   "local fd00:1::1 dev blue table 200 metric 1024 pref medium",
                   "local 10.1.0.1 dev e1 scope host",
                   "local fd00:1::1 dev e1 metric 1024 pref medium"};
const Lines ofVirtual{
    "local 10.3.0.9 dev e3 table local scope host",
    "local fd00:3::9 dev e3 table local metric 1024 pref medium", "fd00:3::9 dev e3 proxy proto 77",
    "local fd00:2::9 dev e2 table 200 metric 1024 pref medium", "fd00:2::9 dev e2 proxy proto 77"};
const Lines ofOthers{"10.99.0.0/24 dev e3 scope link",
                     "fd00:99::/64 dev e3 metric 1024 pref medium",
                     "local 10.98.0.1 dev e2 table 200 scope host"};

Lines both(Lines lines, const Lines& more) {
    lines.insert(more.begin(), more.end());
    return lines;
}

void configure(const std::string& leaks) {
    std::ofstream("/run/config.json") << R"({
        "virtualIps": {"ipv4": {"default": {"10.3.0.9/24": {"e3": true}},
                                "blue": {"10.2.0.9/24": {"e2": true}}},
                       "ipv6": {"default": {"fd00:3::9": {"e3": true}},
                                "blue": {"fd00:2::9": {"e2": true}}}})"
                                      << leaks << '}';
}

void configureAll() {
    configure(R"(, "leaks": {
        "ipv4": {"red": {"10.1.0.0/24": {"blue": true, "default": true}}},
        "ipv6": {"red": {"fd00:1::/64": {"blue": true, "default": true}}}})");
}

/// A router: e1 in red, e2 in blue, e3 in neither, each with a neighbour in a namespace of its own.
class RoutesThatActTest : public VmTest {
  protected:
    void SetUp() override {
        VmTest::SetUp();
        if (IsSkipped() || HasFatalFailure()) {
            return;
        }
        withoutDuplicateDetection();
        for (const char* setting :
             {"all/forwarding", "all/proxy_ndp", "default/keep_addr_on_down"}) {
            setKernel(std::string("ipv6/conf/") + setting, "1");
        }
        addNamespaces({"near1", "near2", "near3"});
        ASSERT_TRUE(ipIn("", "link add red up type vrf table 100\n"
                             "link add blue up type vrf table 200"));
        addNeighbour("1", "link set e1 master red\n");
        addNeighbour("2", "link set e2 master blue\n");
        addNeighbour("3", "");
        ASSERT_TRUE(ipIn("", "route add 10.99.0.0/24 dev e3 proto 98\n"
                             "route add fd00:99::/64 dev e3 proto 98\n"
                             "route add local 10.98.0.1 dev e2 table 200 proto 98"));
    }

    static void addNeighbour(const std::string& n, const std::string& enslave) {
        ASSERT_TRUE(ipIn("", "link add e" + n + " up type veth peer name p" + n + " netns near" + n
                                 + '\n' + enslave + "addr add 10." + n + ".0.1/24 dev e" + n
                                 + "\naddr add fd00:" + n + "::1/64 dev e" + n));
        ASSERT_TRUE(ipIn("near" + n, "link set p" + n + " up\naddr add 10." + n + ".0.2/24 dev p"
                                         + n + "\naddr add fd00:" + n + "::2/64 nodad dev p" + n
                                         + "\nroute add default via 10." + n
                                         + ".0.1\nroute add default via fd00:" + n + "::1"));
    }

    static void expectInstalled(LiveProgram& agent, const Lines& lines) {
        Lines found;
        EXPECT_TRUE(agent.until([&] { return (found = installed()) == lines; }))
            << testing::PrintToString(found) << show("routes") << agent.err();
        EXPECT_EQ(installed("98"), ofOthers);
    }

    static constexpr const char* run = "run --install --config /run/config.json";
};

TEST_F(RoutesThatActTest, NeighboursReachWhatIsLeakedToTheirVrfAndItsVirtualAddressesWhileTheyAre) {
    EXPECT_FALSE(answers("near2", "10.1.0.1") || answers("near2", "fd00:1::1"));
    configureAll();
    LiveProgram agent(run);
    expectInstalled(agent, both(leaked, ofVirtual));
    for (const char* near : {"near2", "near3"}) {
        EXPECT_TRUE(answers(near, "10.1.0.1") && answers(near, "fd00:1::1")) << near;
    }
    EXPECT_TRUE(answers("near3", "10.3.0.9") && answers("near3", "fd00:3::9"));
    EXPECT_TRUE(answers("near2", "fd00:2::9"));
    EXPECT_THAT(show("routes --vrf blue"), HasSubstr("not installable: "));

    configure("");
    agent.signal(SIGHUP);
    expectInstalled(agent, ofVirtual);
    for (const char* near : {"near2", "near3"}) {
        EXPECT_FALSE(answers(near, "10.1.0.1") || answers(near, "fd00:1::1")) << near;
    }
    EXPECT_EQ(agent.endedBy(SIGTERM), 0);
    EXPECT_THAT(installed(), IsEmpty());
    EXPECT_EQ(installed("98"), ofOthers);
}

TEST_F(RoutesThatActTest, KernelHasTheRoutesAgainAfterWhateverHappenedToThem) {
    configureAll();
    const Lines all = both(leaked, ofVirtual);
    {
        LiveProgram killed(run);
        expectInstalled(killed, all);
        EXPECT_EQ(killed.endedBy(SIGKILL), -1);
    }
    ASSERT_EQ(installed(), all);
    LiveProgram agent(run);
    ASSERT_TRUE(agent.until([] { return show("vrfs").find(" no ") == std::string::npos; }));
    for (const char* step :
         {"link set e1 down\nlink set e1 up\nlink set e2 down\nlink set e2 up",
          "route flush table all proto 77", "link set blue down\nlink set blue up",
          "link set e1 nomaster\nlink set e1 master red",
          "link set e3 master blue\nlink set e3 nomaster",
          "link del blue\nlink add blue up type vrf table 200\nlink set e2 master blue\n"
          "route add local 10.98.0.1 dev e2 table 200 proto 98"}) {
        SCOPED_TRACE(step);
        ASSERT_TRUE(ipIn("", step));
        ASSERT_TRUE(ipIn("", "route replace 10.99.0.0/24 dev e3 proto 98\n"
                             "route replace fd00:99::/64 dev e3 proto 98\n"
                             "route replace local 10.98.0.1 dev e2 table 200 proto 98"));
        expectInstalled(agent, all);
    }
    EXPECT_TRUE(answers("near2", "10.1.0.1") && answers("near2", "fd00:1::1"));
    EXPECT_EQ(agent.endedBy(SIGTERM), 0);
    EXPECT_THAT(installed(), IsEmpty());
    EXPECT_EQ(installed("98"), ofOthers);
}

} // namespace
