#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <string>
#include <sys/ioctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

#include "tests/agent/KernelRoutes.h"
#include "tests/agent/LiveProgram.h"
#include "tests/agent/PrivateNamespace.h"
#include "tests/agent/Program.h"

namespace {

using Agent::Linux::inPrivateNamespace;
using Agent::Linux::ip;
using Agent::Linux::manyAddresses;
using Agent::Linux::setKernel;
using TestSupport::agentRoutes;
using TestSupport::kernelRoutes;
using TestSupport::LiveProgram;
using TestSupport::RoutesByPrefix;
using TestSupport::runProgram;
using TestSupport::runShell;

/// Addresses count at once instead of after a second of looking for duplicates.
void withoutDuplicateDetection() {
    setKernel("ipv6/conf/all/accept_dad", "0");
    setKernel("ipv6/conf/default/accept_dad", "0");
}

std::string show(const std::string& arguments) { return runProgram("show " + arguments).out; }

/// Whether each of the kernel's prefixes goes through one of its links, and no others are there.
bool agree(const RoutesByPrefix& kernel, const RoutesByPrefix& agent) {
    if (kernel.size() != agent.size()) {
        return false;
    }
    for (const auto& [prefix, links] : kernel) {
        const auto found = agent.find(prefix);
        if (found == agent.end() || !links.contains(*found->second.begin())) {
            return false;
        }
    }
    return true;
}

/// Waits until the running agent has the routes that the kernel has in its own tables.
void expectKernelRoutes(LiveProgram& agent, const std::string& vrf, const std::string& netns = {}) {
    RoutesByPrefix kernel;
    RoutesByPrefix own;
    const bool agreed = agent.until([&] {
        kernel = kernelRoutes(netns);
        own = agentRoutes(show("--json --vrf " + vrf), vrf);
        return agree(kernel, own);
    });
    EXPECT_TRUE(agreed) << "VRF " << vrf << "\nkernel: " << nlohmann::json(kernel)
                        << "\nagent: " << nlohmann::json(own) << '\n'
                        << agent.err();
}

std::string temporaryFile(const std::string& text) {
    std::string path = "/run/config.json";
    std::ofstream(path) << text;
    return path;
}

} // namespace

TEST(Run, OnceShowsTheLoopbackOfAFreshNamespace) {
    inPrivateNamespace([] {
        const auto run = runProgram("run --once --json");
        ASSERT_EQ(run.status, 0) << run.err;
        const auto state = nlohmann::json::parse(run.out)["vrfs"]["default"];
        EXPECT_EQ(state["ready"], nlohmann::json({{"ipv4", true}, {"ipv6", true}}));
        EXPECT_EQ(state["ipv4"], nlohmann::json::parse(R"({
            "127.0.0.0/8": {"type": 11, "intf": "lo", "via": "connected"},
            "127.0.0.1/32": {"type": 1, "intf": "lo", "via": "receive"},
            "127.0.0.0/32": {"type": 3, "intf": "lo", "via": "receive-broadcast"},
            "127.255.255.255/32": {"type": 4, "intf": "lo", "via": "directed-broadcast"}})"));
    });
}

TEST(Run, FollowsEveryKindOfChangeAsTheKernelDoes) {
    inPrivateNamespace([] {
        withoutDuplicateDetection();
        LiveProgram agent({"run"});
        const std::vector<std::string> steps{
            "link add e1 up type veth peer name p1\nlink add e2 up type veth peer name p2",
            "link set p1 up\nlink set p2 up",
            "addr add 10.1.0.1/24 dev e1\naddr add 2001:db8:1::1/64 dev e1",
            // A second address of the subnet, then promotion of it.
            "addr add 10.1.0.2/24 dev e1", "addr del 10.1.0.1/24 dev e1",
            "addr add 10.2.0.1/32 dev e1\naddr add 2001:db8:2::1/128 dev e1",
            "addr add 10.3.0.0/31 dev e1\naddr add 10.4.0.1/30 dev e1",
            "addr add 10.5.0.1 peer 10.5.0.2 dev e1",
            // One subnet on two links, which then loses one and then the other.
            "addr add 10.6.0.1/24 dev e1\naddr add 10.6.0.2/24 dev e2",
            "addr del 10.6.0.1/24 dev e1",
            // The kernel has no IPv6 on links of small packets.
            "addr add 2001:db8:6::1/64 dev e2\nlink set e2 mtu 1200", "addr add 10.7.0.1/24 dev e2",
            "link set e2 mtu 1500", "addr add 2001:db8:6::1/64 dev e2", "link set p1 down",
            "link set p1 up", "link set e1 down", "link set e1 up",
            "addr add 2001:db8:1::1/64 dev e1",
            "link set e1 down\nlink set e1 name f1\nlink set f1 up", "addr flush dev f1",
            "link del e2", "link set lo down", "link set lo up"};
        setKernel("ipv4/conf/all/promote_secondaries", "1");
        ASSERT_TRUE(agent.untilOut("+ default 127.0.0.0/8  11 connected  lo  connected\n"));
        for (const std::string& step : steps) {
            SCOPED_TRACE(step);
            ASSERT_TRUE(ip(step));
            expectKernelRoutes(agent, "default");
        }
        EXPECT_TRUE(agent.untilOut("+ default 10.3.0.0/31  11 connected  e1  connected\n"));
        EXPECT_TRUE(agent.untilOut("~ default 10.6.0.0/24  11 connected  e2  connected\n"));
        EXPECT_TRUE(agent.untilOut("- default 10.6.0.0/24\n"));
        EXPECT_EQ(agent.endedBy(SIGTERM), 0);
        EXPECT_EQ(agent.err(), "");
    });
}

TEST(Run, HasAllRoutesAfterABurstThatOverranItsSocketWhileItStoodStill) {
    inPrivateNamespace([] {
        withoutDuplicateDetection();
        ASSERT_TRUE(ip("link add e1 type veth peer name p1\nlink set e1 up\nlink set p1 up"));
        LiveProgram agent({"run", "--json"});
        ASSERT_TRUE(agent.untilOut("\"prefix\":\"127.0.0.0/8\""));
        agent.signal(SIGSTOP);
        constexpr int addresses = 20000;
        ASSERT_TRUE(ip(manyAddresses(addresses)));
        agent.signal(SIGCONT);
        const std::string all = R"("routes":{"ipv4":)" + std::to_string(addresses * 4 + 4) + ',';
        std::string vrfs;
        EXPECT_TRUE(agent.until([&] {
            vrfs = show("vrfs --json");
            return vrfs.find(all) != std::string::npos;
        })) << vrfs;
        EXPECT_EQ(agent.endedBy(SIGINT), 0);
    });
}

TEST(Run, FollowsNamedNamespacesLeaksAndVirtualIps) {
    inPrivateNamespace([] {
        withoutDuplicateDetection();
        const std::string config = temporaryFile(R"({
            "vrfs": {"red": {"id": 5}},
            "virtualIps": {"ipv4": {"red": {"10.1.0.9/24": {"e1": true}}},
                           "ipv6": {"red": {"2001:DB8:1::9": {"e1": true}}}},
            "leaks": {"ipv4": {"red": {"10.1.0.0/24": {"blue": true}}},
                      "ipv6": {"red": {"2001:db8:1::/64": {"blue": true}}}},
            "ribWaits": {"red": true}})");
        ASSERT_TRUE(ip("netns add nsred"));
        LiveProgram agent(
            {"run", "--vrf", "red=nsred", "--vrf", "blue=nsblue", "--config", config});
        ASSERT_TRUE(
            ip("netns add nsblue\nlink add e1 netns nsred type veth peer name e1 netns nsblue"));
        const auto inside = [](const std::string& ns, const std::string& lines) {
            ASSERT_EQ(runShell("ip -n " + ns + " -batch -", lines).status, 0) << lines;
        };
        inside("nsred", "link set lo up\nlink set e1 up\naddr add 10.1.0.1/24 dev e1\n"
                        "addr add 2001:db8:1::1/64 dev e1 nodad");
        inside("nsblue", "link set lo up\nlink set e1 up\naddr add 10.2.0.1/24 dev e1\n"
                         "addr add 2001:db8:2::1/64 dev e1 nodad");
        const nlohmann::json virtualIp{{"type", 1}, {"intf", "e1"}, {"via", "receive"}};
        const nlohmann::json leaked{
            {"type", 1}, {"intf", "e1"}, {"via", "receive"}, {"sourceVrf", "red"}};
        const auto expectRoute = [&](const std::string& vrf, const char* family, const char* prefix,
                                     const nlohmann::json& expected) {
            nlohmann::json found;
            EXPECT_TRUE(agent.until([&] {
                const auto state = nlohmann::json::parse(show("--json"), nullptr, false);
                if (!state.is_object()) {
                    return false; // the agent does not listen yet
                }
                const auto routes = nlohmann::json::json_pointer("/vrfs/" + vrf + '/' + family);
                found =
                    state.value(routes, nlohmann::json::object()).value(prefix, nlohmann::json());
                return found == expected;
            })) << vrf
                << ' ' << prefix << ": " << found << agent.err();
        };
        expectRoute("red", "ipv4", "10.1.0.9/32", virtualIp);
        expectRoute("red", "ipv6", "2001:db8:1::9/128", virtualIp);
        expectRoute("blue", "ipv4", "10.1.0.1/32", leaked);
        expectRoute("blue", "ipv6", "2001:db8:1::1/128", leaked);
        EXPECT_NE(show("leaks").find("10.1.0.0/24"), std::string::npos);
        EXPECT_NE(show("vips --vrf red").find("10.1.0.9/24"), std::string::npos);

        // Without the virtual addresses the kernel has the same routes, in each namespace.
        temporaryFile(R"({"vrfs": {"red": {"id": 5}}, "ribWaits": {"red": true},
                          "leaks": {"ipv4": {"red": {"10.1.0.0/24": {"blue": true}}}}})");
        agent.signal(SIGHUP);
        expectRoute("red", "ipv4", "10.1.0.9/32", nullptr);
        expectRoute("blue", "ipv6", "2001:db8:1::1/128", nullptr);
        expectKernelRoutes(agent, "red", "nsred");
        expectKernelRoutes(agent, "blue", "nsblue");

        // A bad file changes nothing and says where it is bad.
        temporaryFile("{\n\"leaks\": {},\n\"vrfs\":\n {\"red\": {\"id\": true}}}");
        agent.signal(SIGHUP);
        EXPECT_TRUE(agent.untilErr("config.json:4: /vrfs/red/id: ")) << agent.err();
        // Nor does one that takes the id of a VRF that runs.
        temporaryFile("{\"vrfs\": {\n\"green\": {\"id\": 1}}}");
        agent.signal(SIGHUP);
        EXPECT_TRUE(agent.untilErr("config.json:2: /vrfs/green/id: 1 is the id of VRF blue"))
            << agent.err();
        expectRoute("blue", "ipv4", "10.1.0.1/32", leaked);

        ASSERT_TRUE(ip("netns del nsred"));
        expectRoute("blue", "ipv4", "10.1.0.1/32", nullptr);
        EXPECT_TRUE(agent.until([] { return show("vrfs").find("\nred ") == std::string::npos; }));
        ASSERT_TRUE(ip("netns add nsred"));
        EXPECT_TRUE(agent.until([] { return show("vrfs").find("\nred ") != std::string::npos; }))
            << show("vrfs");
        EXPECT_EQ(agent.endedBy(SIGTERM), 0);
    });
}

TEST(Run, RefusesBadOptionsAndConfigurations) {
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
             {"", "{\n\n\"kernel\": {}}", ":3: /kernel: is learned from the kernel"},
             {"", "{\"vrfs\": {\"red\":\n{\"status\": {}}}}", ":2: /vrfs/red/status: "},
             {"", "{\"vrfs\": {\"red\": {\"id\": 0}}}",
              ":1: /vrfs/red/id: 0 is the id of VRF default"},
             {"", "{\"vrfs\": {\"a\": {\"id\": 7},\n\"b\": {\"id\": 7}}}",
              "/id: 7 is the id of VRF "},
             {"", "{\"leaks\":\n{\"ipv4\":\n", ":3: "},
             {"", "{\"virtualIps\":\n{\"ipv4\": {\"a\": {\"x at byte y\": {}}}}}", ":2: "},
             {"", "[]", ":1: must be an object"}}) {
        SCOPED_TRACE(std::string(test.arguments) + ' ' + test.config);
        const auto run =
            runProgram(std::string("run --once --config - ") + test.arguments, test.config);
        EXPECT_EQ(run.status, 2);
        EXPECT_EQ(run.out, "");
        EXPECT_NE(run.err.find(test.message), std::string::npos) << run.err;
    }
}

TEST(Run, ConfigurationThatIsNoFileIsRefusedAtTheStartAndLater) {
    inPrivateNamespace([] {
        ASSERT_EQ(::mkfifo("/run/pipe", 0600), 0);
        ASSERT_EQ(::mkdir("/run/folder", 0700), 0);
        std::ofstream("/run/large") << "{}";
        std::filesystem::resize_file("/run/large", (std::uintmax_t{64} << 20U) + 1);
        const std::vector<std::pair<std::string, std::string>> cases{
            {"pipe", "is no regular file"},
            {"folder", "is a directory"},
            {"large", "is larger than 64 MiB"},
            {"missing", "No such file or directory"},
            {"zero", "is no regular file"}};
        std::filesystem::create_symlink("/dev/zero", "/run/zero");
        for (const auto& [name, message] : cases) {
            const auto run = runProgram("run --config /run/" + name);
            EXPECT_EQ(run.status, 2);
            EXPECT_EQ(run.err,
                      std::string("/run/").append(name).append(": ").append(message) + '\n');
        }
        const std::string config = temporaryFile(R"({"vrfs": {"default": {"id": 0}}})");
        LiveProgram agent({"run", "--config", config});
        ASSERT_TRUE(agent.untilOut("127.0.0.0/8")) << agent.err();
        for (const auto& [name, message] : cases) {
            std::filesystem::remove(config);
            if (name != "missing") {
                std::filesystem::rename("/run/" + name, config);
            }
            agent.signal(SIGHUP);
            std::string line("directnet: ");
            line.append(config).append(": ").append(message).append("\n");
            EXPECT_TRUE(agent.untilErr(line)) << agent.err();
        }
        EXPECT_NE(show("vrfs").find("default"), std::string::npos);
        EXPECT_EQ(agent.endedBy(SIGTERM), 0);
    });
}

TEST(Run, StartThatWaitsForStandardInputCanBeEnded) {
    int ends[2];
    ASSERT_EQ(::pipe2(ends, O_CLOEXEC), 0);
    LiveProgram agent({DIRECTNET_EXECUTABLE, "run", "--no-socket", "--config", "-"}, ends[0]);
    ASSERT_EQ(::write(ends[1], "{", 1), 1);
    int waiting = 1;
    ASSERT_TRUE(
        agent.until([&] { return ::ioctl(ends[0], FIONREAD, &waiting) == 0 && waiting == 0; }));
    EXPECT_EQ(agent.endedBy(SIGTERM), -1);
    ::close(ends[0]);
    ::close(ends[1]);
}

TEST(Run, StandardInputIsReadAsAConfigurationOnceOnly) {
    inPrivateNamespace([] {
        int ends[2];
        ASSERT_EQ(::pipe2(ends, O_CLOEXEC), 0);
        ASSERT_EQ(::write(ends[1], "{}", 2), 2);
        ::close(ends[1]);
        LiveProgram agent({DIRECTNET_EXECUTABLE, "run", "--config", "-"}, ends[0]);
        ::close(ends[0]);
        ASSERT_TRUE(agent.untilOut("127.0.0.0/8")) << agent.err();
        agent.signal(SIGHUP);
        EXPECT_TRUE(agent.untilErr("at the start only"));
        EXPECT_EQ(agent.endedBy(SIGTERM), 0);
    });
}

TEST(Run, MayOpenAsManyFilesAsTheSystemLets) {
    inPrivateNamespace([] {
        LiveProgram agent(
            {"/bin/sh", "-c", "ulimit -Sn 64; exec '" DIRECTNET_EXECUTABLE "' run --no-socket"},
            STDIN_FILENO);
        ASSERT_TRUE(agent.untilOut("127.0.0.0/8")) << agent.err();
        rlimit limit{};
        ASSERT_EQ(::prlimit(agent.pid(), RLIMIT_NOFILE, nullptr, &limit), 0);
        EXPECT_EQ(limit.rlim_cur, limit.rlim_max);
        EXPECT_EQ(agent.endedBy(SIGTERM), 0);
    });
}
