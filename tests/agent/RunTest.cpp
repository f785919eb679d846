#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <sys/ioctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <vector>

#include "agent/base/FileDescriptor.h"
#include "tests/agent/KernelRoutes.h"
#include "tests/agent/LiveProgram.h"
#include "tests/agent/PrivateNamespace.h"
#include "tests/agent/Program.h"

namespace {

using namespace TestSupport;
using Agent::FileDescriptor;
using nlohmann::json;
using testing::HasSubstr;
using RunTest = LiveTest;

constexpr const char* config = "/run/config.json";

void configure(const std::string& text) { std::ofstream(config) << text; }

/// Addresses count at once instead of after a second of looking for duplicates.
void withoutDuplicateDetection() {
    setKernel("ipv6/conf/all/accept_dad", "0");
    setKernel("ipv6/conf/default/accept_dad", "0");
}

/// Waits until the running agent has the routes that the kernel has in its own tables.
void expectKernelRoutes(LiveProgram& agent, const std::string& vrf, const std::string& netns = {}) {
    RoutesByPrefix kernel;
    RoutesByPrefix own;
    EXPECT_TRUE(agent.until([&] {
        kernel = kernelRoutes(netns);
        own = agentRoutes(show("--json --vrf " + vrf), vrf);
        return agree(kernel, own);
    })) << "VRF "
        << vrf << "\nkernel: " << json(kernel) << "\nagent: " << json(own) << '\n'
        << agent.err();
}

TEST_F(RunTest, OnceAndShowGiveTheStateOfAFreshNamespace) {
    const auto run = runProgram("run --once --json");
    ASSERT_EQ(run.status, 0) << run.err;
    const json once = json::parse(run.out);
    const json& state = once["vrfs"]["default"];
    EXPECT_EQ(state["ready"], json({{"ipv4", true}, {"ipv6", true}}));
    EXPECT_EQ(state["ipv4"], json::parse(R"({
        "127.0.0.0/8": {"type": 11, "intf": "lo", "via": "connected"},
        "127.0.0.1/32": {"type": 1, "intf": "lo", "via": "receive"},
        "127.0.0.0/32": {"type": 3, "intf": "lo", "via": "receive-broadcast"},
        "127.255.255.255/32": {"type": 4, "intf": "lo", "via": "directed-broadcast"}})"));
    LiveProgram agent("run");
    json shown;
    EXPECT_TRUE(agent.until([&] {
        shown = json::parse(show("--json"), nullptr, false);
        if (shown.is_object()) {
            shown["time"] = once["time"];
        }
        return shown == once;
    })) << shown
        << '\n'
        << once;
    EXPECT_EQ(runProgram("show --vrf nowhere").status, 1);
    EXPECT_EQ(runProgram("show nothing").status, 2);
    EXPECT_EQ(runProgram("show --socket /run/nobody").status, 1);
}

TEST_F(RunTest, AgentFollowsEveryKindOfChangeAsTheKernelDoes) {
    withoutDuplicateDetection();
    LiveProgram agent("run");
    const std::vector<std::string> steps{
        "link add e1 up type veth peer name p1\nlink add e2 up type veth peer name p2",
        "link set p1 up\nlink set p2 up",
        "addr add 10.1.0.1/24 dev e1\naddr add 2001:db8:1::1/64 dev e1",
        // A second address of the subnet, then promotion of it.
        "addr add 10.1.0.2/24 dev e1", "addr del 10.1.0.1/24 dev e1",
        "addr replace 10.1.0.2/24 metric 9 dev e1",
        "addr add 10.2.0.1/32 dev e1\naddr add 2001:db8:2::1/128 dev e1",
        "addr add 10.3.0.0/31 dev e1\naddr add 10.4.0.1/30 dev e1",
        "addr add 10.5.0.1 peer 10.5.0.2 dev e1\naddr add 10.8.0.1/24 scope host dev e1",
        // One subnet on two links, which then loses one and then the other.
        "addr add 10.6.0.1/24 dev e1\naddr add 10.6.0.2/24 dev e2", "addr del 10.6.0.1/24 dev e1",
        // The kernel has no IPv6 on links of small packets.
        "addr add 2001:db8:6::1/64 dev e2\nlink set e2 mtu 1200", "addr add 10.7.0.1/24 dev e2",
        "link set e2 mtu 1500", "addr add 2001:db8:6::1/64 dev e2",
        "addr add 2001:db8:6::2/64 optimistic dev e2", "link set p1 down", "link set p1 up",
        "link set e1 down", "link set e1 up", "addr replace 2001:db8:1::1/64 dev e1",
        "link add br0 type bridge\nlink set e1 master br0", "link del br0",
        "link set e1 down\nlink set e1 name f1\nlink set f1 up",
        "link set e2 down\nlink set e2 name e1\nlink set e1 up", "addr flush dev f1",
        "netns add other\nlink set f1 netns other", "link del e1\nnetns del other",
        "addr add 2001:db8:9::1/128 dev lo\nlink set lo mtu 1000", "link set lo down",
        "link set lo up mtu 1500"};
    ASSERT_TRUE(agent.untilOut("+ default 127.0.0.0/8  11 connected  lo  connected\n"));
    for (const char* setting : {"1", "0"}) {
        setKernel("ipv4/conf/all/promote_secondaries", setting);
        setKernel("ipv6/conf/default/keep_addr_on_down", setting);
        for (const std::string& step : steps) {
            SCOPED_TRACE(step);
            ASSERT_TRUE(ip(step));
            expectKernelRoutes(agent, "default");
        }
    }
    EXPECT_TRUE(agent.untilOut("+ default 10.3.0.0/31  11 connected  e1  connected\n"));
    EXPECT_TRUE(agent.untilOut("~ default 10.6.0.0/24  11 connected  e2  connected\n"));
    EXPECT_TRUE(agent.untilOut("- default 10.6.0.0/24\n"));
    EXPECT_EQ(agent.endedBy(SIGTERM), 0);
    EXPECT_EQ(agent.err(), "");
}

TEST_F(RunTest, AgentHasAllRoutesAfterABurstThatOverranItsSocketWhileItStoodStill) {
    withoutDuplicateDetection();
    ASSERT_TRUE(ip(linkWithAddresses(200)));
    LiveProgram agent("run --json");
    ASSERT_TRUE(agent.learned());
    expectKernelRoutes(agent, "default");
    agent.signal(SIGSTOP);
    // A link is told of at length, so few changes fill the socket.
    std::string burst;
    for (int i = 0; i < 8000; ++i) {
        burst += "link set p1 alias a" + std::to_string(i % 10) + '\n';
    }
    ASSERT_TRUE(ip(burst + "addr del 10.0.0.1/24 dev e1\naddr add 10.9.0.1/24 dev e1"));
    EXPECT_GT(lostAnnouncements(), 2);
    agent.signal(SIGCONT);
    expectKernelRoutes(agent, "default");
    EXPECT_EQ(agent.endedBy(SIGINT), 0);
}

TEST_F(RunTest, AgentFollowsNamedNamespacesLeaksAndVirtualIps) {
    withoutDuplicateDetection();
    configure(R"({
        "vrfs": {"red": {"id": 5}},
        "virtualIps": {"ipv4": {"red": {"10.1.0.9/24": {"e1": true, "e2": false}}},
                       "ipv6": {"red": {"2001:DB8:1::9": {"e1": true}}}},
        "leaks": {"ipv4": {"red": {"10.1.0.0/24": {"blue": true}}},
                  "ipv6": {"red": {"2001:db8:1::/64": {"blue": true}}}},
        "ribWaits": {"red": true}})");
    ASSERT_TRUE(ip("netns add nsred"));
    LiveProgram agent("run --vrf red=nsred --vrf blue=nsblue --config /run/config.json");
    ASSERT_TRUE(
        ip("netns add nsblue\nlink add e1 netns nsred type veth peer name e1 netns nsblue"));
    for (const auto& [netns, subnet] : {std::pair("nsred", "1"), std::pair("nsblue", "2")}) {
        std::ostringstream lines;
        lines << "link set lo up\nlink set e1 up\naddr add 10." << subnet
              << ".0.1/24 dev e1\naddr add 2001:db8:" << subnet << "::1/64 dev e1 nodad";
        ASSERT_EQ(runShell(std::string("ip -batch - -n ") + netns, lines.str()).status, 0);
    }
    const json virtualIp{{"type", 1}, {"intf", "e1"}, {"via", "receive"}};
    json leaked = virtualIp;
    leaked["sourceVrf"] = "red";
    const auto expectRoute = [&](const std::string& vrf, const std::string& family,
                                 const char* prefix, const json& expected) {
        json found;
        EXPECT_TRUE(agent.until([&] {
            const json state = json::parse(show("--json"), nullptr, false);
            if (!state.is_object()) {
                return false; // the agent does not listen yet
            }
            const json::json_pointer routes("/vrfs/" + vrf + '/' + family);
            found = state.value(routes, json::object()).value(prefix, json());
            return found == expected;
        })) << vrf
            << ' ' << prefix << ": " << found << agent.err();
    };
    expectRoute("red", "ipv4", "10.1.0.9/32", virtualIp);
    expectRoute("red", "ipv6", "2001:db8:1::9/128", virtualIp);
    expectRoute("blue", "ipv4", "10.1.0.1/32", leaked);
    expectRoute("blue", "ipv6", "2001:db8:1::1/128", leaked);
    EXPECT_THAT(show("leaks"), HasSubstr("10.1.0.0/24"));
    EXPECT_THAT(show("vips --vrf red"), HasSubstr("10.1.0.9/24    e1 "));

    // Without the virtual addresses the kernel has the same routes, in each namespace.
    configure(R"({"vrfs": {"red": {"id": 5}}, "ribWaits": {"red": true},
                  "leaks": {"ipv4": {"red": {"10.1.0.0/24": {"blue": true}}}}})");
    agent.signal(SIGHUP);
    expectRoute("red", "ipv4", "10.1.0.9/32", nullptr);
    expectRoute("blue", "ipv6", "2001:db8:1::1/128", nullptr);
    expectKernelRoutes(agent, "red", "nsred");
    expectKernelRoutes(agent, "blue", "nsblue");

    // A bad file changes nothing and says where it is bad.
    configure("{\n\"leaks\": {},\n\"vrfs\":\n {\"red\": {\"id\": true}}}");
    agent.signal(SIGHUP);
    EXPECT_TRUE(agent.untilErr("config.json:4:11: /vrfs/red/id: ")) << agent.err();
    // Nor does one that takes the id of a VRF that runs.
    configure("{\"vrfs\": {\n\"green\": {\"id\": 1}}}");
    agent.signal(SIGHUP);
    EXPECT_TRUE(agent.untilErr("config.json:2:11: /vrfs/green/id: 1 is the id of VRF blue"))
        << agent.err();
    expectRoute("blue", "ipv4", "10.1.0.1/32", leaked);

    ASSERT_TRUE(ip("netns del nsred"));
    expectRoute("blue", "ipv4", "10.1.0.1/32", nullptr);
    EXPECT_TRUE(agent.untilShown("vrfs", "no such network namespace")) << show("vrfs");
    EXPECT_THAT(runProgram("show --vrf red").err, HasSubstr("VRF red is not up: no such"));
    ASSERT_TRUE(ip("netns add nsred"));
    EXPECT_TRUE(agent.until([] { return show("vrfs").find("no such") == std::string::npos; }));
    EXPECT_EQ(agent.endedBy(SIGTERM), 0);
}

TEST(RunOptions, BadOptionsAndConfigurationsAreRefused) {
    struct Case {
        const char* arguments;
        const char* config;
        const char* message;
    };
    for (const Case& test : std::vector<Case>{
             {"--vrf red", "{}", "NAME=NETNS"},
             {"--vrf red=", "{}", "NAME=NETNS"},
             {"--vrf default=ns1", "{}", "default"},
             {"--vrf red=../ns1", "{}", "no name of a namespace"},
             {"--vrf red=ns1 --vrf red=ns2", "{}", "given twice"},
             {"--vrf red=ns1 --vrf blue=ns1", "{}", "given twice"},
             {"", "{\n\n\"kernel\": {}}", ":3:1: /kernel: is learned from the kernel"},
             {"", "{\"vrfs\": {\"red\":\n{\"status\": {}}}}", ":2:2: /vrfs/red/status: "},
             {"", "{\"vrfs\": {\"red\": {\"id\": 0}}}",
              ":1:19: /vrfs/red/id: 0 is the id of VRF default"},
             {"", "{\"vrfs\": {\"a\": {\"id\": 7},\n\"b\": {\"id\": 7}}}",
              "/id: 7 is the id of VRF "},
             {"", "{\"leaks\":\n{\"ipv4\":\n", ":3:1: "},
             {"", "{\"virtualIps\":\n{\"ipv4\": {\"a\": {\"x at byte y\": {}}}}}", ":2:17: "},
             {"", "[]", ":1:1: must be an object"}}) {
        SCOPED_TRACE(std::string(test.arguments) + ' ' + test.config);
        const auto run =
            runProgram(std::string("run --once --config - ") + test.arguments, test.config);
        EXPECT_EQ(run.status, 2);
        EXPECT_EQ(run.out, "");
        EXPECT_THAT(run.err, HasSubstr(test.message));
    }
}

TEST_F(RunTest, ConfigurationThatIsNoFileIsRefusedAtTheStartAndLater) {
    ASSERT_EQ(::mkfifo("/run/pipe", 0600), 0);
    ASSERT_EQ(::mkdir("/run/folder", 0700), 0);
    std::ofstream("/run/large") << "{}";
    std::filesystem::resize_file("/run/large", (std::uintmax_t{64} << 20U) + 1);
    std::filesystem::create_symlink("/dev/zero", "/run/zero");
    configure(R"({"vrfs": {"default": {"id": 0}}})");
    LiveProgram agent("run --config /run/config.json");
    ASSERT_TRUE(agent.learned()) << agent.err();
    for (const std::pair<std::string, std::string> test :
         {std::pair("pipe", "is no regular file"), std::pair("folder", "is a directory"),
          std::pair("large", "is larger than 64 MiB"), std::pair("zero", "is no regular file"),
          std::pair("missing", "No such file or directory")}) {
        const std::string path = "/run/" + test.first;
        const auto run = runProgram("run --config " + path);
        EXPECT_EQ(run.status, 2);
        EXPECT_EQ(run.err, path + ": " + test.second + '\n');
        std::filesystem::remove(config);
        std::error_code missing;
        std::filesystem::rename(path, config, missing);
        agent.signal(SIGHUP);
        EXPECT_TRUE(agent.untilErr("directnet: /run/config.json: " + test.second + '\n'))
            << agent.err();
    }
    EXPECT_THAT(show("vrfs"), HasSubstr("default"));
    EXPECT_EQ(agent.endedBy(SIGTERM), 0);
}

TEST_F(RunTest, StandardInputIsWaitedForAtTheStartOnlyAndNotForEver) {
    int ends[2];
    ASSERT_EQ(::pipe2(ends, O_CLOEXEC), 0);
    const FileDescriptor in(ends[0]);
    FileDescriptor writer(ends[1]);
    LiveProgram waits("run --no-socket --config -", in.get());
    ASSERT_EQ(::write(writer.get(), "{", 1), 1);
    int unread = 1;
    ASSERT_TRUE(
        waits.until([&] { return ::ioctl(in.get(), FIONREAD, &unread) == 0 && unread == 0; }));
    EXPECT_EQ(waits.endedBy(SIGTERM), -1);

    ASSERT_EQ(::write(writer.get(), "{}", 2), 2);
    writer = FileDescriptor();
    LiveProgram agent("run --config -", in.get());
    ASSERT_TRUE(agent.learned()) << agent.err();
    agent.signal(SIGHUP);
    EXPECT_TRUE(agent.untilErr("at the start only"));
    EXPECT_EQ(agent.endedBy(SIGTERM), 0);
}

TEST_F(RunTest, AgentMayOpenAsManyFilesAsTheSystemLets) {
    LiveProgram agent = LiveProgram::ofShell("ulimit -Sn 64; exec \"$D\" run --no-socket");
    ASSERT_TRUE(agent.learned()) << agent.err();
    rlimit limit{};
    ASSERT_EQ(::prlimit(agent.pid(), RLIMIT_NOFILE, nullptr, &limit), 0);
    EXPECT_EQ(limit.rlim_cur, limit.rlim_max);
}

} // namespace
