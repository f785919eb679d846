#include "tests/vm/VmTest.h"

#include <algorithm>
#include <nlohmann/json.hpp>

namespace TestSupport {

namespace {

using nlohmann::json;
using RoutesByVrf = std::map<std::string, RoutesByPrefix>;

RoutesByVrf kernelState(const FollowedNamespaces& namespaces) {
    RoutesByVrf vrfs;
    for (const auto& [vrf, netns] : namespaces) {
        vrfs.merge(kernelVrfs(vrf, netns));
    }
    return vrfs;
}

RoutesByVrf agentState() {
    const std::string state = show("--json");
    const json document = json::parse(state, nullptr, false);
    RoutesByVrf vrfs;
    if (document.is_object()) {
        for (const auto& vrf : document["vrfs"].items()) {
            vrfs[vrf.key()] = agentRoutes(state, vrf.key());
        }
    }
    return vrfs;
}

} // namespace

void VmTest::SetUp() {
    LiveTest::SetUp();
    if (!IsSkipped() && !ip("link add probe type vrf table 9999\nlink del probe")) {
        GTEST_SKIP() << "the kernel has no VRF devices: ./dev vm-test starts one that has";
    }
}

testing::AssertionResult ipIn(const std::string& netns, const std::string& lines) {
    const std::string in = netns.empty() ? "" : "-n " + netns + ' ';
    const ProgramRun run = runShell("exec ip -force " + in + "-batch -", lines);
    return run.status == 0 ? testing::AssertionSuccess()
                           : testing::AssertionFailure() << run.err << lines.substr(0, 2000);
}

void addNamespaces(const std::vector<std::string>& names) {
    for (const std::string& name : names) {
        ASSERT_TRUE(ip("netns add " + name) && ipIn(name, "link set lo up"));
    }
}

void withoutDuplicateDetection(const std::string& netns) {
    const std::string in = netns.empty() ? "" : "ip netns exec " + netns + ' ';
    ASSERT_EQ(runShell(in
                       + "sh -c 'for i in all default; do "
                         "echo 0 >/proc/sys/net/ipv6/conf/$i/accept_dad; done'")
                  .status,
              0);
}

void expectKernelVrfs(LiveProgram& agent, const FollowedNamespaces& namespaces) {
    RoutesByVrf kernel;
    RoutesByVrf own;
    EXPECT_TRUE(agent.until([&] {
        kernel = kernelState(namespaces);
        own = agentState();
        return std::equal(kernel.begin(), kernel.end(), own.begin(), own.end(),
                          [](const auto& left, const auto& right) {
                              return left.first == right.first && agree(left.second, right.second);
                          });
    })) << "kernel: "
        << json(kernel) << "\nagent: " << json(own) << '\n'
        << agent.err();
}

bool answers(const std::string& netns, const std::string& address) {
    const auto run =
        runShell("ip netns exec " + netns + " ping -n -c 3 -i 0.3 -W 1 " + address + " >/dev/null");
    return run.status == 0;
}

} // namespace TestSupport
